#include "pictureplan.h"

#include <QFileInfo>

#include <array>
#include <cmath>

namespace irmcore::app {

namespace {

// Each in the order of the enumeration or type it stands for.
constexpr std::array paletteNames{"iron",     "rainbow",  "grey",    "grey-inverted", "spia",
                                  "blue-red", "hot-cold", "feather", "custom"};
constexpr std::array isothermNames{"below", "between", "above", "none"};
constexpr int noIsotherm = 3;
constexpr std::array colourNames{"Trans", "Green", "Black", "White", "Red", "Blue"};
constexpr std::array modeNames{"ir",         "ccd",        "ccd-pipe-ir", "ir-pipe-ccd",
                               "ccd-mix-ir", "ir-mix-ccd", "fusion",      "blank"};
constexpr std::array positionNames{"top-left", "top-right", "bottom-left", "bottom-right"};

struct PictureOption {
    const char* name;
    const char* help;
    const char* value;
};
constexpr std::array pictureOptions{
    PictureOption{"palette",
                  "its colours: iron (the default), rainbow, grey, grey-inverted, spia, blue-red, "
                  "hot-cold, feather or custom",
                  "name"},
    PictureOption{"isotherm",
                  "mark what is below the lower limit, between the limits or above the upper one: "
                  "below, between, above or none (the default)",
                  "type"},
    PictureOption{"limits", "the isotherm's limits in celsius (the middle third of the window)",
                  "low:high"},
    PictureOption{"colour", "the isotherm's: trans (the default), green, black, white, red or blue",
                  "name"},
    PictureOption{"mode",
                  "what the screen shows: ir (the default), ccd (the visible camera), ccd-pipe-ir "
                  "(infrared with a visible inset), ir-pipe-ccd (visible with an infrared inset), "
                  "ccd-mix-ir and ir-mix-ccd (blends), fusion (infrared inside the isotherm, "
                  "visible elsewhere) or blank",
                  "name"},
    PictureOption{"position",
                  "corner of the inset: top-left (the default), top-right, bottom-left or "
                  "bottom-right",
                  "corner"},
};

/// Puts the index of an option's value among `names` into `index`, if the option is given. A text
/// when the value is none of them.
template <std::size_t N>
QString takeName(const QCommandLineParser& parser, const char* option,
                 const std::array<const char*, N>& names, int& index) {
    const QString name = QString::fromLatin1(option);
    if (!parser.isSet(name))
        return {};
    const QString value = parser.value(name);
    QStringList all;
    for (std::size_t i = 0; i < N; ++i) {
        all.append(QString::fromLatin1(names[i]).toLower());
        if (all.constLast() == value) {
            index = static_cast<int>(i);
            return {};
        }
    }
    return QStringLiteral("--%1 takes %2, not '%3'")
        .arg(name, all.join(QStringLiteral(", ")), value);
}

QString takeLimits(const QCommandLineParser& parser, PicturePlan& plan) {
    const QString name = QStringLiteral("limits");
    if (!parser.isSet(name))
        return {};
    const QStringList ends = parser.value(name).split(QLatin1Char(':'));
    bool lowOk = false;
    bool highOk = false;
    const float low = ends.constFirst().toFloat(&lowOk);
    const float high = ends.constLast().toFloat(&highOk);
    if (ends.size() != 2 || !lowOk || !highOk || !std::isfinite(low) || !std::isfinite(high) ||
        low > high)
        return QStringLiteral("--limits takes two temperatures such as 30:60, the lower first, "
                              "not '%1'")
            .arg(parser.value(name));
    plan.limits = IsothermLimits{low, high};
    return {};
}

} // namespace

const char* nameOf(COLOR_TABLE palette) { return paletteNames[static_cast<std::size_t>(palette)]; }
const char* nameOf(Image_Mode_t mode) { return modeNames[static_cast<std::size_t>(mode)]; }
const char* nameOfIsotherm(int type) { return isothermNames[static_cast<std::size_t>(type)]; }

void addPictureOptions(QCommandLineParser& parser) {
    parser.addOption({QStringLiteral("picture"),
                      QStringLiteral("write the camera's screen as PNG instead, with the readings "
                                     "of its spots and its scale"),
                      QStringLiteral("file")});
    for (const PictureOption& option : pictureOptions)
        parser.addOption({QString::fromLatin1(option.name),
                          QStringLiteral("of --picture: ") + QString::fromUtf8(option.help),
                          QString::fromLatin1(option.value)});
}

QString takePicture(const QCommandLineParser& parser, std::optional<PicturePlan>& plan) {
    if (!parser.isSet(QStringLiteral("picture"))) {
        for (const PictureOption& option : pictureOptions)
            if (parser.isSet(QString::fromLatin1(option.name)))
                return QStringLiteral("--%1 goes with --picture").arg(QLatin1String(option.name));
        return {};
    }
    for (const char* other : {"accuracy", "warm-up", "json"})
        if (parser.isSet(QString::fromLatin1(other)))
            return QStringLiteral("--picture does not go with --%1").arg(QLatin1String(other));

    PicturePlan picture;
    const QString file = parser.value(QStringLiteral("picture"));
    if (file.isEmpty())
        return QStringLiteral("--picture takes the name of a file");
    picture.file = QFileInfo(file).absoluteFilePath();
    int palette = picture.palette;
    int isotherm = noIsotherm;
    int colour = 0;
    int mode = picture.mode;
    int position = picture.position;
    for (const QString& wrong :
         {takeName(parser, "palette", paletteNames, palette),
          takeName(parser, "isotherm", isothermNames, isotherm),
          takeName(parser, "colour", colourNames, colour),
          takeName(parser, "mode", modeNames, mode),
          takeName(parser, "position", positionNames, position), takeLimits(parser, picture)})
        if (!wrong.isEmpty())
            return wrong;
    if (mode == IMAGE_FUSION && isotherm == noIsotherm)
        return QStringLiteral("--mode fusion shows infrared inside the isotherm: it needs one");
    picture.palette = static_cast<COLOR_TABLE>(palette);
    if (isotherm != noIsotherm)
        picture.isotherm = isotherm;
    picture.colour = colourNames[static_cast<std::size_t>(colour)];
    picture.mode = static_cast<Image_Mode_t>(mode);
    picture.position = static_cast<Image_Position_t>(position);
    plan = picture;
    return {};
}

} // namespace irmcore::app
