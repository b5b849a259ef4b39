#pragma once

#include "../device/records.h"
#include "../display/palette.h"

#include <QCommandLineParser>

#include <optional>
#include <string>

namespace irmcore::app {

/// Temperatures between which an isotherm lies, °C.
struct IsothermLimits {
    float low;
    float high;
};

/// A picture of the camera's screen: where it goes and what the host sets up for it.
struct PicturePlan {
    QString file; ///< absolute: the working directory changes
    COLOR_TABLE palette = COLOR_IRON;
    std::optional<int> isotherm;          ///< `Isotherm::type`; off without one
    std::optional<IsothermLimits> limits; ///< without them the middle third of the window
    std::string colour = "Trans";         ///< `Isotherm::color`
    Image_Mode_t mode = IMAGE_IR;
    Image_Position_t position = POSITION_TOP_LEFT; ///< of the inset
};

/// Names as the options take them.
const char* nameOf(COLOR_TABLE palette);
const char* nameOf(Image_Mode_t mode);
const char* nameOfIsotherm(int type); ///< 0, 1 or 2

/// Tells the parser of `--picture` and the options that go with it.
void addPictureOptions(QCommandLineParser& parser);

/// Reads them into `plan`, which stays empty without `--picture`. A text on what is wrong with
/// one.
QString takePicture(const QCommandLineParser& parser, std::optional<PicturePlan>& plan);

} // namespace irmcore::app
