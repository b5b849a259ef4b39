// What is painted beside the picture and on it: bar, labels, swatches.
#include "apps/view/window/colourbar.h"
#include "apps/view/window/labels.h"
#include "apps/view/window/swatches.h"
#include "synthetic.h"

#include <gtest/gtest.h>

#include <QImage>

#include <cmath>
#include <cstdlib>

namespace irmcore::view::testing {
namespace {

/// Rows of a bar's image that have a tick right of it; the bar is 18 wide from 6 on.
std::vector<int> ticksOf(double low, double high, bool ok = true) {
    QImage image(120, 320, QImage::Format_RGB32);
    image.fill(Qt::black);
    Snapshot snapshot = synthetic();
    snapshot.barLow = celsius(low);
    snapshot.barHigh = celsius(high);
    if (!ok)
        snapshot.barLow.status = "L";
    QPainter painter(&image);
    QFont font = painter.font();
    font.setPixelSize(12);
    painter.setFont(font);
    paintColourBar(painter, image.rect(), snapshot, Qt::white);
    painter.end();
    std::vector<int> rows;
    for (int y = 0; y < image.height(); ++y)
        if (image.pixel(26, y) == 0xFFFFFFFF && image.pixel(27, y) == 0xFFFFFFFF)
            rows.push_back(y);
    return rows;
}

TEST(ColourBar, HasTicksAtRoundTemperatures) {
    const struct {
        double low, high;
        std::size_t ticks; ///< of a round step, five at most times it in between
    } cases[] = {
        {20, 40, 4},       // 20 25 30 35; the upper end has its own text
        {21, 39, 3},       // 25 30 35
        {-20.5, 150.5, 4}, // 0 50 100 150
        {20.1, 21.05, 5},  // 20.2 to 21.0
        {-7, 7, 3},        // -5 0 5
        {0, 100, 5},       // 0 20 40 60 80
    };
    for (const auto& c : cases) {
        const std::vector<int> rows = ticksOf(c.low, c.high);
        ASSERT_EQ(rows.size(), c.ticks) << c.low << " " << c.high;
        for (std::size_t i = 2; i < rows.size(); ++i) // all the same apart
            EXPECT_LE(std::abs((rows[i] - rows[i - 1]) - (rows[1] - rows[0])), 1);
    }
    EXPECT_TRUE(ticksOf(20, 40, false).empty());
    for (const double high : {20.0, 10.0, 20.005, 1e7, std::nan(""), HUGE_VAL})
        EXPECT_TRUE(ticksOf(20, high).empty()) << high;
}

TEST(Labels, DoNotCoverEachOther) {
    QImage image(300, 200, QImage::Format_RGB32);
    const QRgb white = 0xFFFFFFFF;
    const auto covered = [&](int count, const QRectF& what) {
        image.fill(white);
        QPainter painter(&image);
        Labels labels(painter, image.rect());
        for (int i = 0; i < count; ++i)
            labels.beside(what, QStringLiteral("37.2 °C"), Qt::black);
        painter.end();
        int dark = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                dark += image.pixel(x, y) != white ? 1 : 0;
        return dark;
    };
    const QRectF what(145, 95, 10, 10);
    const int one = covered(1, what);
    EXPECT_GT(one, 300);
    EXPECT_EQ(image.pixel(150, 100), white) << "what is told of stays to be seen";
    EXPECT_NE(image.pixel(170, 100), white) << "right of it";
    for (const int count : {2, 4})
        EXPECT_NEAR(covered(count, what), count * one, 0.1 * one) << count;
    // In a corner it is shown whole all the same, on the other side.
    for (const QRectF& corner : {QRectF(290, 0, 10, 10), QRectF(0, 190, 10, 10)})
        EXPECT_NEAR(covered(1, corner), one, 0.1 * one);
}

TEST(Swatches, HaveTheColdestColourLeft) {
    const struct {
        COLOR_TABLE palette;
        int leftLow, leftHigh, rightLow, rightHigh; ///< brightness from 0 to 255
    } cases[] = {
        {COLOR_GREY, 0, 12, 243, 255},
        {COLOR_GREY_INVERTED, 243, 255, 0, 12},
        {COLOR_IRON, 0, 30, 200, 255},
        {COLOR_SPIA, 0, 80, 180, 255},
    };
    for (const auto& c : cases) {
        const QImage strip = swatch(c.palette, {72, 14}).pixmap(72, 14).toImage();
        ASSERT_EQ(strip.size(), QSize(72, 14));
        const int left = qGray(strip.pixel(0, 7));
        const int right = qGray(strip.pixel(71, 7));
        EXPECT_TRUE(left >= c.leftLow && left <= c.leftHigh) << c.palette << " " << left;
        EXPECT_TRUE(right >= c.rightLow && right <= c.rightHigh) << c.palette << " " << right;
    }
    const QImage blueToRed = swatch(COLOR_BLUE_RED, {72, 14}).pixmap(72, 14).toImage();
    EXPECT_GT(qBlue(blueToRed.pixel(0, 7)), qRed(blueToRed.pixel(0, 7)));
    EXPECT_GT(qRed(blueToRed.pixel(71, 7)), qBlue(blueToRed.pixel(71, 7)));
}

} // namespace
} // namespace irmcore::view::testing
