#include "annotate.h"
#include "commands.h"
#include "image.h"
#include "pictures.h"
#include "screen.h"
#include "shot.h"

#include <QPainter>

namespace irmcore::app {

namespace {

// One palette's cell, in pixels. The picture is half of what a 160x120 camera's screen shows.
constexpr int pictureWidth = 320;
constexpr int pictureHeight = 240;
constexpr int barHeight = 20;
constexpr int titleHeight = 24;
constexpr int gap = 16;
constexpr int cellWidth = pictureWidth + gap;
constexpr int cellHeight = titleHeight + barHeight + 4 + pictureHeight + gap;
constexpr int cellsInRow = 3;

/// The colour bar cut out of a screen and laid down, entry 0 at the left.
QImage barOf(const QImage& screen) {
    const irmsim::Rect bar = colourBar(screen.width(), screen.height());
    return screen.copy(bar.x0, bar.y0, bar.x1 - bar.x0 + 1, bar.y1 - bar.y0 + 1)
        .transformed(QTransform().rotate(90));
}

/// Half as wide and high; a pixel is the mean of four. Qt would start threads for it.
Picture halved(const Picture& picture) {
    Picture half(picture.width / 2, picture.height / 2);
    for (int y = 0; y < half.height; ++y)
        for (int x = 0; x < half.width; ++x) {
            const auto mean = [&](std::uint8_t Rgb::*channel) {
                const int sum = picture.at(2 * x, 2 * y).*channel +
                                picture.at(2 * x + 1, 2 * y).*channel +
                                picture.at(2 * x, 2 * y + 1).*channel +
                                picture.at(2 * x + 1, 2 * y + 1).*channel;
                return static_cast<std::uint8_t>((sum + 2) / 4);
            };
            half.at(x, y) = {mean(&Rgb::r), mean(&Rgb::g), mean(&Rgb::b)};
        }
    return half;
}

void drawCell(QPainter& painter, Shot& shot, COLOR_TABLE palette) {
    const int index = static_cast<int>(palette);
    const int x = gap + index % cellsInRow * cellWidth;
    int y = gap + index / cellsInRow * cellHeight;
    shot.host().setStandardPaletteIndex(palette);
    const QImage withBar = imageOf(shot.screen());
    shot.host().fpga_switch_colorBar(false);
    const QImage picture = imageOf(halved(shot.screen()));
    shot.host().fpga_switch_colorBar(true);
    painter.drawText(x, y, pictureWidth, titleHeight, Qt::AlignVCenter,
                     QStringLiteral("%1  %2").arg(index).arg(QLatin1String(nameOf(palette))));
    y += titleHeight;
    painter.drawImage(QRect(x, y, pictureWidth, barHeight), barOf(withBar));
    y += barHeight + 4;
    painter.drawImage(x, y, picture);
}

} // namespace

int drawPalettes(const QString& file) {
    QString error;
    if (!fontsAreThere(error)) {
        complain(error);
        return exitErrors;
    }
    Shot shot(irmsim::Scene::bench(160, 120), {}, 0);
    if (!shot.error().isEmpty()) {
        complain(shot.error());
        return exitErrors;
    }
    const int rows = (color_size + cellsInRow - 1) / cellsInRow;
    QImage sheet(gap + cellsInRow * cellWidth, gap + rows * cellHeight, QImage::Format_RGB32);
    sheet.fill(QColor(32, 32, 32));
    QPainter painter(&sheet);
    painter.setFont(pictureFont(15));
    painter.setPen(Qt::white);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    for (int index = 0; index < color_size; ++index)
        drawCell(painter, shot, static_cast<COLOR_TABLE>(index));
    painter.end();
    if (!writePng(sheet, file, error)) {
        complain(error);
        return exitErrors;
    }
    return exitClean;
}

} // namespace irmcore::app
