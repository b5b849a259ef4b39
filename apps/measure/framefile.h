#pragma once

#include "plan.h"
#include "reading.h"

#include <QByteArray>

namespace irmcore::app::measuring {

/// A frame's words in a scale, and what does not fit.
struct Words {
    std::vector<quint16> words;
    int cut = 0; ///< pixels beyond the scale's end, which have the end's value
};
Words wordsOf(const ThermalFrame& frame, Scale scale);

/// What a word means, in one line.
QString meaningOf(Scale scale);

/// The name of reading `number`'s file: it takes the place of the first "%d" or "%0Nd", or stands
/// before the ending where there is none.
QString numberedName(const QString& name, int number);

/// Writes the frame, in the format that the name's ending tells; `note` is kept in the file, but
/// for CSV. Until all is written a file that was there stays. False, with a text in `error`, when
/// that fails.
bool writeFrame(const ThermalFrame& frame, Scale scale, const QString& note, const QString& file,
                QString& error);

/// Whether this build writes PNG.
bool writesPng();
/// The words as a 16-bit greyscale PNG with `note` in it; `error` when it has none.
QByteArray pngOf(const ThermalFrame& frame, const std::vector<quint16>& words, const QString& note,
                 QString& error);

} // namespace irmcore::app::measuring
