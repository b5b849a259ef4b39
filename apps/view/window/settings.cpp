#include "settings.h"

#include "measurementpanel.h"
#include "picturepanel.h"
#include "wording.h"

#include <QSettings>
#include <QStringList>

#include <algorithm>
#include <cmath>

namespace irmcore::view {

namespace {

constexpr int widest = 384; // pixels of the largest frame
constexpr int highest = 288;
constexpr int mostNumber = 99;

void readNumber(const QSettings& settings, const char* key, double& value) {
    bool ok = false;
    const double read = settings.value(QLatin1String(key)).toDouble(&ok);
    if (ok && std::isfinite(read))
        value = read;
}

int readWhole(const QSettings& settings, const char* key, int otherwise) {
    bool ok = false;
    const int read = settings.value(QLatin1String(key)).toInt(&ok);
    return ok ? read : otherwise;
}

/// Only what was written, not whatever is text: that would be true.
bool readFlag(const QSettings& settings, const char* key, bool otherwise) {
    const QString read = settings.value(QLatin1String(key)).toString();
    return read == QLatin1String("true") || (read != QLatin1String("false") && otherwise);
}

/// "line 2 10 20 110 120": kind, number, both ends.
QString textOf(const PlacedTool& placed) {
    const Span& place = placed.tool.place;
    return QStringLiteral("%1 %2 %3 %4 %5 %6")
        .arg(kindName(placed.tool.kind))
        .arg(placed.number)
        .arg(place.from.x)
        .arg(place.from.y)
        .arg(place.to.x)
        .arg(place.to.y);
}

bool toolOf(const QString& text, PlacedTool& placed) {
    const QStringList words = text.split(QLatin1Char(' '));
    if (words.size() != 6)
        return false;
    int numbers[5] = {};
    for (int i = 0; i < 5; ++i) {
        bool ok = false;
        numbers[i] = words[i + 1].toInt(&ok);
        if (!ok)
            return false;
    }
    bool known = false;
    for (const ToolKind kind : {ToolKind::spot, ToolKind::line, ToolKind::area})
        if (words[0] == kindName(kind)) {
            placed.tool.kind = kind;
            known = true;
        }
    const auto inside = [](int x, int y) { return x >= 0 && x < widest && y >= 0 && y < highest; };
    placed.number = numbers[0];
    placed.tool.place = {{numbers[1], numbers[2]}, {numbers[3], numbers[4]}};
    if (placed.tool.kind == ToolKind::spot)
        placed.tool.place.to = placed.tool.place.from;
    return known && placed.number >= 1 && placed.number <= mostNumber &&
           inside(numbers[1], numbers[2]) && inside(numbers[3], numbers[4]);
}

std::vector<PlacedTool> readTools(const QSettings& settings) {
    std::vector<PlacedTool> tools;
    for (const QString& text : settings.value(QStringLiteral("tools")).toStringList()) {
        PlacedTool placed;
        if (!toolOf(text, placed))
            continue;
        const bool twice = std::any_of(tools.begin(), tools.end(), [&](const PlacedTool& other) {
            return other.tool.kind == placed.tool.kind && other.number == placed.number;
        });
        if (!twice)
            tools.push_back(placed);
    }
    return tools;
}

} // namespace

Remembered readRemembered(QSettings& settings) {
    Remembered result;
    Parameters& parameters = result.parameters;
    readNumber(settings, "parameters/emissivity", parameters.emissivity);
    readNumber(settings, "parameters/distance", parameters.distance);
    readNumber(settings, "parameters/humidity", parameters.humidity);
    readNumber(settings, "parameters/air", parameters.air);
    readNumber(settings, "parameters/reflected", parameters.reflected);
    readNumber(settings, "parameters/offset", parameters.offset);
    parameters = MeasurementPanel::checked(parameters);
    Look& look = result.look;
    // Nothing but a number that one of them has becomes one of them.
    const auto within = [&](const char* key, int otherwise, int most) {
        const int read = readWhole(settings, key, otherwise);
        return read >= 0 && read <= most ? read : otherwise;
    };
    look.palette = static_cast<COLOR_TABLE>(within("look/palette", look.palette, COLOR_FEATHER));
    look.window = static_cast<Mode_t>(within("look/window", look.window, LEVELSPAN_HAND));
    look.mode = static_cast<Image_Mode_t>(within("look/mode", look.mode, IMAGE_BLANK));
    look.inset =
        static_cast<Image_Position_t>(within("look/inset", look.inset, POSITION_BOTTOM_RIGHT));
    readNumber(settings, "look/low", look.low);
    readNumber(settings, "look/high", look.high);
    readNumber(settings, "look/blend", look.blend);
    look = PicturePanel::checked(look);
    IsothermWish& isotherm = result.isotherm;
    isotherm.on = readFlag(settings, "isotherm/on", isotherm.on);
    isotherm.type = readWhole(settings, "isotherm/type", isotherm.type);
    readNumber(settings, "isotherm/low", isotherm.low);
    readNumber(settings, "isotherm/high", isotherm.high);
    isotherm.colour = toLocal(
        settings.value(QStringLiteral("isotherm/colour"), fromLocal(isotherm.colour)).toString());
    isotherm = PicturePanel::checked(isotherm);
    result.range = within("range", 0, 1);
    result.marks = readFlag(settings, "marks", true);
    result.calibrates = readFlag(settings, "calibrates", true);
    result.tools = readTools(settings);
    return result;
}

void writeRemembered(QSettings& settings, const Remembered& remembered) {
    const auto write = [&](const char* key, const QVariant& value) {
        settings.setValue(QLatin1String(key), value);
    };
    const Parameters& parameters = remembered.parameters;
    write("parameters/emissivity", parameters.emissivity);
    write("parameters/distance", parameters.distance);
    write("parameters/humidity", parameters.humidity);
    write("parameters/air", parameters.air);
    write("parameters/reflected", parameters.reflected);
    write("parameters/offset", parameters.offset);
    const Look& look = remembered.look;
    write("look/palette", int{look.palette});
    write("look/window", int{look.window});
    write("look/mode", int{look.mode});
    write("look/inset", int{look.inset});
    write("look/low", look.low);
    write("look/high", look.high);
    write("look/blend", look.blend);
    const IsothermWish& isotherm = remembered.isotherm;
    write("isotherm/on", isotherm.on);
    write("isotherm/type", isotherm.type);
    write("isotherm/low", isotherm.low);
    write("isotherm/high", isotherm.high);
    write("isotherm/colour", fromLocal(isotherm.colour));
    write("range", remembered.range);
    write("marks", remembered.marks);
    write("calibrates", remembered.calibrates);
    QStringList tools;
    for (const PlacedTool& placed : remembered.tools)
        tools += textOf(placed);
    write("tools", tools);
}

} // namespace irmcore::view
