#include "colourbar.h"

#include "wording.h"

#include <QFontMetricsF>
#include <QImage>

#include <cmath>

namespace irmcore::view {

namespace {

constexpr double barWidth = 18.0;
constexpr double gap = 6.0;

/// A round step so that a handful of ticks lie between the ends.
double stepOf(double span) {
    const double rough = span / 5.0;
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    for (const double factor : {1.0, 2.0, 5.0})
        if (rough <= factor * power)
            return factor * power;
    return 10.0 * power;
}

QString tickText(double celsius, double step) {
    const int decimals = step >= 1.0 ? 0 : step >= 0.1 ? 1 : 2;
    QString text = QString::number(celsius, 'f', decimals);
    if (std::abs(celsius) < step / 2.0)
        text.remove(QLatin1Char('-'));
    return text.replace(QLatin1Char('-'), QChar(0x2212));
}

void paintTicks(QPainter& painter, const QRectF& bar, double low, double high) {
    const double span = high - low;
    if (!(span > 0.01) || !(span < 1e5))
        return;
    const QFontMetricsF metrics(painter.font());
    const double step = stepOf(span);
    // The ends' own texts keep their room.
    const double margin = span * metrics.height() * 1.1 / bar.height();
    const double first = std::ceil(low / step);
    for (int i = 0; (first + i) * step < high; ++i) {
        const double at = (first + i) * step;
        const double y = bar.bottom() - bar.height() * (at - low) / span;
        painter.drawLine(QPointF(bar.right(), y), QPointF(bar.right() + 3.0, y));
        if (at - low < margin || high - at < margin)
            continue;
        const QRectF box(bar.right() + gap, y - metrics.height() / 2.0, 200.0, metrics.height());
        painter.drawText(box, Qt::AlignLeft | Qt::AlignVCenter, tickText(at, step));
    }
}

} // namespace

int colourBarWidth(const QFontMetrics& metrics) {
    return static_cast<int>(barWidth + 2.0 * gap) +
           metrics.horizontalAdvance(QString::fromUtf8("−100.0 °C"));
}

void paintColourBar(QPainter& painter, const QRectF& room, const Snapshot& snapshot,
                    const QColor& text) {
    const QFontMetricsF metrics(painter.font());
    const double half = metrics.height() / 2.0;
    const QRectF bar(room.left() + gap, room.top() + half, barWidth, room.height() - 2.0 * half);
    if (bar.height() < 20.0)
        return;
    // One column, hottest on top.
    QImage column(1, static_cast<int>(snapshot.bar.size()), QImage::Format_RGB32);
    for (int y = 0; y < column.height(); ++y)
        column.setPixel(
            0, y, snapshot.bar[static_cast<std::size_t>(column.height() - 1 - y)] | 0xFF000000U);
    painter.drawImage(bar, column);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(text, 1.0));
    painter.drawRect(bar);
    const auto end = [&](double y, const Value& value) {
        const QRectF box(bar.right() + gap, y - half, room.right() - bar.right() - gap,
                         metrics.height());
        painter.drawText(box, Qt::AlignLeft | Qt::AlignVCenter, shortText(value));
    };
    end(bar.top(), snapshot.barHigh);
    end(bar.bottom(), snapshot.barLow);
    if (snapshot.barLow.ok() && snapshot.barHigh.ok())
        paintTicks(painter, bar, snapshot.barLow.celsius, snapshot.barHigh.celsius);
}

} // namespace irmcore::view
