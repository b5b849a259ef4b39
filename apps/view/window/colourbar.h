#pragma once

#include "../snapshot.h"

#include <QPainter>

namespace irmcore::view {

/// Room that the bar and its temperatures take beside a picture.
int colourBarWidth(const QFontMetrics& metrics);

/// The palette, coldest below, with the temperatures of its ends and some between.
void paintColourBar(QPainter& painter, const QRectF& room, const Snapshot& snapshot,
                    const QColor& text);

} // namespace irmcore::view
