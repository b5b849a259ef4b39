#include "annotate.h"
#include "commands.h"
#include "image.h"
#include "pictures.h"
#include "scenereadings.h"
#include "screen.h"
#include "screen_colouring.h"
#include "shot.h"
#include "spotplaces.h"

#include <algorithm>
#include <cstring>

namespace irmcore::app {

namespace {

constexpr float blendShare = 0.5F; // of either picture in a blend

QString celsius(float value) {
    return QString::number(static_cast<double>(value), 'f', 1) + QStringLiteral(" °C");
}

/// A reading for people: the temperature, or why there is none.
QString textOf(const IrTempStru& reading) {
    return isOk(reading) ? celsius(reading.temp) : QString::fromLatin1(reading.status);
}

/// The middle third of the window.
IsothermLimits middleOf(const IrTempStru& low, const IrTempStru& high, const RangeLimits& range) {
    const auto inRange = [&](float temp) {
        return std::clamp(temp, static_cast<float>(range.min), static_cast<float>(range.max));
    };
    const float bottom = inRange(low.temp);
    const float third = (inRange(high.temp) - bottom) / 3;
    return {bottom + third, bottom + 2 * third};
}

void setIsotherm(FPGA& host, int type, const IsothermLimits& limits, const std::string& colour) {
    Isotherm iso = host.getIsoPara();
    iso.type = type;
    iso.reference = 0;
    iso.useMinMax = 1;
    iso.minTemp = limits.low;
    iso.maxTemp = limits.high;
    std::memset(iso.color, 0, sizeof(iso.color));
    colour.copy(iso.color, sizeof(iso.color) - 1);
    host.setIsoPara(iso);
    host.setIsoSwitch(true);
}

QString isothermText(const PicturePlan& plan, const IsothermLimits& limits) {
    const QString name = QString::fromLatin1(nameOfIsotherm(*plan.isotherm));
    QString band;
    if (*plan.isotherm == 0)
        band = celsius(limits.low);
    else if (*plan.isotherm == 2)
        band = celsius(limits.high);
    else
        band = celsius(limits.low) + QStringLiteral(" and ") + celsius(limits.high);
    return QStringLiteral("isotherm %1 %2, %3")
        .arg(name, band, QString::fromStdString(plan.colour).toLower());
}

void compose(FPGA& host, const PicturePlan& plan) {
    host.setImageMode(plan.mode);
    host.set_CCD_Pipe_IR_Position(plan.position);
    host.set_IR_Pipe_CCD_Position(plan.position);
    host.set_CCD_mix_IR_percent(blendShare);
    host.set_IR_mix_CCD_percent(blendShare);
}

/// What was read of the camera beside its picture.
struct Readings {
    std::vector<Reading> spots;
    IrTempStru low;
    IrTempStru high;
};

Annotations annotationsOf(const DemoPlan& plan, Shot& shot, const Picture& screen,
                          const Readings& readings, const std::optional<IsothermLimits>& limits) {
    const PicturePlan& picture = *plan.picture;
    const RangeLimits range = limitsOfRange(plan.range);
    FPGA& host = shot.host();
    Annotations a;
    if (picture.mode != IMAGE_BLANK) {
        a.bar = colourBar(screen.width, screen.height);
        a.barTop = textOf(readings.high);
        a.barBottom = textOf(readings.low);
    }
    const auto places = spotPlaces(shot, readings.spots, picture.mode, screen);
    for (std::size_t i = 0; i < places.size(); ++i)
        if (places[i])
            a.spots.push_back({places[i]->x, places[i]->y, textOf(readings.spots[i].value)});
    a.captions.push_back(
        {QStringLiteral("palette %1 · mode %2 · range %3 (%4 to %5 °C) · level %6, span %7")
             .arg(QLatin1String(nameOf(host.getPaletteIndex())),
                  QLatin1String(nameOf(picture.mode)))
             .arg(plan.range)
             .arg(range.min)
             .arg(range.max)
             .arg(host.fpga_get_level())
             .arg(host.fpga_get_span()),
         std::nullopt});
    if (limits)
        a.captions.push_back({isothermText(picture, *limits),
                              Colouring(shot.bench().camera().board()).entry(isothermEntry)});
    if (const std::size_t hidden = places.size() - a.spots.size(); hidden > 0)
        a.captions.push_back({QStringLiteral("spots out of view: %1").arg(hidden), std::nullopt});
    return a;
}

} // namespace

int drawDemo(const DemoPlan& plan, std::FILE* out) {
    QString error;
    if (!fontsAreThere(error)) {
        complain(error);
        return exitErrors;
    }
    Shot shot(plan.scene, plan.surroundings, plan.range);
    if (!shot.error().isEmpty()) {
        complain(shot.error());
        return exitErrors;
    }
    const PicturePlan& picture = *plan.picture;
    FPGA& host = shot.host();
    host.setStandardPaletteIndex(picture.palette);
    Readings readings;
    host.getMinMaxTemp(&readings.low, &readings.high);
    readings.spots = measureSpots(shot.bench());
    std::optional<IsothermLimits> limits;
    if (picture.isotherm) {
        limits = picture.limits ? *picture.limits
                                : middleOf(readings.low, readings.high, limitsOfRange(plan.range));
        setIsotherm(host, *picture.isotherm, *limits, picture.colour);
    }
    compose(host, picture);
    const Picture screen = shot.screen();
    const QImage image =
        annotated(imageOf(screen), annotationsOf(plan, shot, screen, readings, limits));
    if (!writePng(image, picture.file, error)) {
        complain(error);
        return exitErrors;
    }
    std::fprintf(out, "%s: %dx%d, %s to %s\n", picture.file.toLocal8Bit().constData(),
                 image.width(), image.height(), textOf(readings.low).toUtf8().constData(),
                 textOf(readings.high).toUtf8().constData());
    return exitClean;
}

} // namespace irmcore::app
