#include "swatches.h"

#include "../../screen.h"

#include <QImage>
#include <QPixmap>

namespace irmcore::view {

QIcon swatch(COLOR_TABLE palette, QSize size) {
    const _yuv_item* const table = color_tables_yuv[palette];
    QImage strip(paletteSize, 1, QImage::Format_RGB32);
    for (int x = 0; x < paletteSize; ++x) {
        const app::Rgb colour = app::rgbOf(table[x].y, table[x].u, table[x].v);
        strip.setPixel(x, 0, qRgb(colour.r, colour.g, colour.b));
    }
    return QIcon(QPixmap::fromImage(strip.scaled(size)));
}

} // namespace irmcore::view
