#include "annotate.h"

#include "labels.h"

#include <QFontMetrics>
#include <QPainter>

namespace irmcore::app {

namespace {

constexpr int fontHeight = 13; // pixels, as all that follow
constexpr int padding = 3;
constexpr int barBorder = 2; // that the screen draws about the bar
constexpr int margin = 8;    // about the captions

QRect rectOf(const Box& box) { return {box.x, box.y, box.width, box.height}; }

Box boxOf(const irmsim::Rect& rect) {
    return {rect.x0, rect.y0, rect.x1 - rect.x0 + 1, rect.y1 - rect.y0 + 1};
}

QImage letter(QChar character) {
    QImage image(2 * fontHeight, 2 * fontHeight, QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    painter.setFont(pictureFont(fontHeight));
    painter.setPen(Qt::white);
    painter.drawText(image.rect(), Qt::AlignCenter, character);
    return image;
}

/// The size of a text on its plate.
QSize plateOf(const QString& text) {
    const QFontMetrics metrics(pictureFont(fontHeight));
    return {metrics.horizontalAdvance(text) + 2 * padding, metrics.height()};
}

void drawPlate(QPainter& painter, const Box& box, const QString& text) {
    painter.fillRect(rectOf(box), QColor(0, 0, 0, 190));
    painter.setPen(Qt::white);
    painter.drawText(rectOf(box), Qt::AlignCenter, text);
}

/// White on black, so that it shows on any colour.
void drawCross(QPainter& painter, const Spot& spot) {
    const auto bars = [&](int widen, const QColor& colour) {
        const int reach = spotReach - 1 + widen;
        painter.fillRect(spot.x - reach, spot.y - widen, 2 * reach + 1, 2 * widen + 1, colour);
        painter.fillRect(spot.x - widen, spot.y - reach, 2 * widen + 1, 2 * reach + 1, colour);
    };
    bars(1, Qt::black);
    bars(0, Qt::white);
}

/// The label of the bar's upper or lower end: beyond it, flush with the bar's right side.
Label endLabel(const Box& bar, const QString& text, bool top) {
    const QSize size = plateOf(text);
    const int end = top ? bar.y - barBorder : bar.y + bar.height + barBorder;
    const Box beyond{bar.x + bar.width - size.width(), top ? end - size.height() - 1 : end + 1,
                     size.width(), size.height()};
    return {{bar.x, end, bar.width, 0}, size.width(), size.height(), beyond};
}

void drawOverlays(QPainter& painter, const Box& screen, const Annotations& a) {
    std::vector<Box> taken;
    std::vector<Label> labels;
    QStringList texts;
    if (!a.barTop.isEmpty()) {
        const Box bar = boxOf(a.bar);
        taken.push_back(bar);
        labels = {endLabel(bar, a.barTop, true), endLabel(bar, a.barBottom, false)};
        texts << a.barTop << a.barBottom;
    }
    for (const Spot& spot : a.spots) {
        constexpr int side = 2 * spotReach + 1;
        const QSize size = plateOf(spot.text);
        labels.push_back(
            {{spot.x - spotReach, spot.y - spotReach, side, side}, size.width(), size.height()});
        texts << spot.text;
        drawCross(painter, spot);
    }
    const auto places = placeLabels(screen, labels, taken);
    for (std::size_t i = 0; i < places.size(); ++i)
        if (places[i])
            drawPlate(painter, *places[i], texts[static_cast<int>(i)]);
}

/// Where each caption goes below a screen: as many lines as it takes.
std::vector<QRect> captionPlaces(const QSize& screen, const std::vector<Caption>& captions) {
    const QFontMetrics metrics(pictureFont(fontHeight));
    std::vector<QRect> places;
    int y = screen.height() + margin;
    for (const Caption& caption : captions) {
        const int indent = caption.colour ? metrics.height() + margin : 0;
        const QRect room(margin + indent, y, screen.width() - 2 * margin - indent, 1000);
        places.push_back(metrics.boundingRect(room, Qt::TextWordWrap, caption.text));
        places.back().setWidth(room.width());
        y += places.back().height() + padding;
    }
    return places;
}

} // namespace

bool fontsAreThere(QString& error) {
    // Without a font, and with one that lacks them, Qt draws the same box for every letter.
    if (letter(QLatin1Char('1')) != letter(QLatin1Char('8')))
        return true;
    error = QStringLiteral("there is no font to label the picture with; on Debian the package "
                           "fonts-dejavu-core has one");
    return false;
}

QFont pictureFont(int pixels) {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(pixels);
    return font;
}

QImage annotated(const QImage& screen, const Annotations& annotations) {
    const std::vector<QRect> places = captionPlaces(screen.size(), annotations.captions);
    const int height = places.empty() ? screen.height() : places.back().bottom() + 1 + margin;
    QImage image(screen.width(), height, QImage::Format_RGB32);
    image.fill(QColor(32, 32, 32));
    QPainter painter(&image);
    painter.setFont(pictureFont(fontHeight));
    painter.drawImage(0, 0, screen);
    drawOverlays(painter, {0, 0, screen.width(), screen.height()}, annotations);
    for (std::size_t i = 0; i < places.size(); ++i) {
        const Caption& caption = annotations.captions[i];
        if (caption.colour) {
            const int side = QFontMetrics(painter.font()).height();
            const QRect patch(margin, places[i].top(), side - 1, side - 1);
            painter.fillRect(patch,
                             QColor(caption.colour->r, caption.colour->g, caption.colour->b));
            painter.setPen(Qt::gray);
            painter.drawRect(patch);
        }
        painter.setPen(Qt::white);
        painter.drawText(places[i], Qt::TextWordWrap, caption.text);
    }
    return image;
}

} // namespace irmcore::app
