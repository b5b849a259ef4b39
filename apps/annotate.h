#pragma once

#include "../sim/frame.h"
#include "picture.h"

#include <QFont>
#include <QImage>
#include <QString>

#include <optional>
#include <vector>

namespace irmcore::app {

/// A measured spot on the screen.
struct Spot {
    int x; ///< column of the screen
    int y; ///< row of the screen
    QString text;
};

/// A line below the screen; with a colour, a patch of it stands in front.
struct Caption {
    QString text;
    std::optional<Rgb> colour;
};

/// What is written over and below a screen.
struct Annotations {
    std::vector<Spot> spots;
    irmsim::Rect bar; ///< where the colour bar lies
    QString barTop;   ///< what its ends are; empty without a bar
    QString barBottom;
    std::vector<Caption> captions;
};

/// Whether there is a font to write with; `error` says what to do without one.
bool fontsAreThere(QString& error);

/// The font of all pictures, so many pixels high.
QFont pictureFont(int pixels);

/// The screen with its annotations, and a strip below it for the captions. Labels stand on dark
/// plates and cover neither each other nor the bar nor a spot; one without room is left out.
QImage annotated(const QImage& screen, const Annotations& annotations);

} // namespace irmcore::app
