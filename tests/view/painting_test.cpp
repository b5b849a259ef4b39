// What is painted, pixel by pixel, without a camera.
#include "application.h"
#include "apps/view/window/colourbar.h"
#include "apps/view/window/pictureview.h"
#include "synthetic.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace irmcore::view::testing {
namespace {

constexpr QRgb ground = 0xFF1E2024;

/// The widget's pixels at so many for one of its units.
QImage imageOf(PictureView& view, double ratio = 1.0) {
    QImage image((QSizeF(view.size()) * ratio).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    view.render(&image);
    image.setDevicePixelRatio(1.0);
    return image;
}

/// A view that has no focus, whose frame would be another's.
class Painting : public ::testing::Test {
protected:
    void SetUp() override {
        m_view.setFocusPolicy(Qt::NoFocus);
        m_view.setMarks(false);
        m_view.resize(520, 320);
        m_view.setVisible(true);
    }
    QImage imageOfSnapshot(const Snapshot& snapshot) {
        m_view.show(shared(snapshot));
        return imageOf(m_view);
    }
    QPoint at(Pixel pixel) const { return m_view.placement().centreOf(pixel).toPoint(); }

    Tools m_tools;
    PictureView m_view{m_tools};
};

/// Colours along a line, each with its number of pixels.
using Runs = std::vector<std::pair<QRgb, int>>;
Runs runsOf(const QImage& image, QPoint from, QPoint step) {
    Runs runs;
    for (QPoint at = from; image.rect().contains(at); at += step) {
        if (runs.empty() || runs.back().first != image.pixel(at))
            runs.emplace_back(image.pixel(at), 0);
        ++runs.back().second;
    }
    return runs;
}

TEST_F(Painting, ShowsEveryPixelAlikeAtEverySize) {
    m_view.show(shared(synthetic(32, 24)));
    const struct {
        QSize size;
        double ratio;
    } cases[] = {{{520, 320}, 1.0}, {{520, 320}, 2.0}, {{520, 320}, 1.5},
                 {{900, 300}, 1.0}, {{330, 700}, 1.0}, {{331, 203}, 1.25}};
    for (const auto& c : cases) {
        m_view.resize(c.size);
        const QImage image = imageOf(m_view, c.ratio);
        // A line across the picture's middle has its row 11 or 12.
        const QPointF middle = m_view.placement().area().center() * c.ratio;
        const Runs across = runsOf(image, {0, static_cast<int>(middle.y())}, {1, 0});
        const Runs down = runsOf(image, {static_cast<int>(middle.x()), 0}, {0, 1});
        ASSERT_GT(across.size(), 33U);
        ASSERT_EQ(down.size(), 26U); // and the ground above and below
        EXPECT_EQ(across[0].first, ground);
        EXPECT_EQ(down[0].first, ground);
        EXPECT_EQ(down[25].first, ground);
        EXPECT_LE(std::abs(down[0].second - down[25].second), 1) << "in the middle";
        EXPECT_GE(across[0].second, static_cast<int>(10 * c.ratio));
        const int row = (static_cast<int>(qGreen(across[1].first)) - 8) / 9;
        const int column = (static_cast<int>(qRed(down[1].first)) - 8) / 7;
        EXPECT_TRUE(row == 11 || row == 12) << row;
        const int width = across[5].second; // of any pixel; the others' differ by rounding
        for (int x = 0; x < 32; ++x) {
            const auto& run = across[static_cast<std::size_t>(x + 1)];
            EXPECT_EQ(run.first, colourAt(x, row)) << x;
            EXPECT_LE(std::abs(run.second - width), 1) << x;
        }
        for (int y = 0; y < 24; ++y) {
            const auto& run = down[static_cast<std::size_t>(y + 1)];
            EXPECT_EQ(run.first, colourAt(column, y)) << y;
            EXPECT_LE(std::abs(run.second - width), 1) << "square pixels " << y;
        }
    }
}

TEST_F(Painting, HasTheHottestColourOnTop) {
    const QImage image = imageOfSnapshot(synthetic());
    const int x = static_cast<int>(m_view.placement().area().right()) + 6 + 9;
    int before = 256;
    int seen = 0;
    for (int y = 0; y < image.height(); ++y) {
        const QRgb pixel = image.pixel(x, y);
        if (qRed(pixel) + qBlue(pixel) != 255 || qGreen(pixel) != 0)
            continue;
        EXPECT_LE(qRed(pixel), before);
        before = qRed(pixel);
        ++seen;
    }
    EXPECT_GT(seen, 200);
    EXPECT_LE(before, 3);
}

TEST_F(Painting, SaysWhatTheCameraDoes) {
    const Snapshot plain = synthetic();
    Snapshot gone = plain;
    gone.present = false;
    gone.calibrating = true; // the worse one is shown
    Snapshot closed = plain;
    closed.calibrating = true;
    Snapshot frozen = plain;
    frozen.frozen = true;
    std::vector<QImage> images;
    for (const Snapshot& snapshot : {plain, closed, frozen, gone})
        images.push_back(imageOfSnapshot(snapshot));
    const QRectF area = m_view.placement().area();
    const QPoint badge(static_cast<int>(area.center().x()), static_cast<int>(area.top()) + 20);
    for (std::size_t i = 0; i < images.size(); ++i)
        for (std::size_t j = 0; j < i; ++j) {
            EXPECT_GT(different(images[i], images[j], badge, 60), 20) << i << " " << j;
            EXPECT_EQ(different(images[i], images[j], area.center().toPoint() + QPoint(0, 60), 60),
                      0);
        }
    m_view.show(shared(Snapshot{}));
    Snapshot troubled;
    troubled.troubles = {"The camera is not there."};
    const QImage waits = imageOf(m_view);
    EXPECT_GT(different(waits, imageOfSnapshot(troubled), m_view.rect().center(), 150), 100);
}

TEST_F(Painting, DrawsToolsWhereTheyAre) {
    Snapshot snapshot = synthetic(160, 120);
    const QImage without = imageOfSnapshot(snapshot);
    const int spot = m_tools.place(ToolKind::spot, {{40, 30}, {40, 30}});
    snapshot.readings = {{spot, ToolKind::spot, celsius(37.2), {}, {}}};
    m_tools.select(0);
    const QImage cross = imageOfSnapshot(snapshot);
    EXPECT_EQ(cross.pixel(at({40, 30})), without.pixel(at({40, 30}))) << "nothing hides the pixel";
    EXPECT_GT(different(cross, without, at({40, 30}), 10), 60);
    EXPECT_GT(different(cross, without, at({40, 30}) + QPoint(40, 0), 20), 200) << "its reading";
    EXPECT_EQ(different(cross, without, at({130, 100}), 60), 0);
    snapshot.readings[0].hottest.celsius = 58.8;
    EXPECT_GT(different(imageOfSnapshot(snapshot), cross, at({40, 30}) + QPoint(40, 0), 40), 10);
    m_tools.select(spot);
    EXPECT_GT(different(imageOf(m_view), cross, at({40, 30}), 10), 20) << "selected";
    m_tools.clear();
    const int area = m_tools.place(ToolKind::area, {{60, 60}, {100, 100}});
    snapshot.readings = {{area, ToolKind::area, celsius(37.2, {80, 90}), {}, {}}};
    const QImage box = imageOfSnapshot(snapshot);
    for (const Pixel corner : {Pixel{60, 60}, {100, 60}, {60, 100}, {100, 100}, {80, 90}})
        EXPECT_GT(different(box, without, at(corner), 5), 15) << corner.x << " " << corner.y;
    EXPECT_EQ(different(box, without, at({70, 75}), 5), 0) << "the inside is left alone";
}

TEST_F(Painting, MarksTheHottestAndTheColdest) {
    Snapshot snapshot = synthetic(160, 120);
    snapshot.hottest = celsius(99.0, {120, 90});
    snapshot.coldest = celsius(-9.0, {30, 20});
    const QImage without = imageOfSnapshot(snapshot);
    m_view.setMarks(true);
    const QImage marked = imageOf(m_view);
    EXPECT_EQ(marked.pixel(at({120, 90})), 0xFFFF6050);
    EXPECT_EQ(marked.pixel(at({30, 20})), 0xFF6EBEFF);
    // One stands on its broad side, the other on its point.
    EXPECT_EQ(marked.pixel(at({120, 90}) + QPoint(-2, 2)), 0xFFFF6050);
    EXPECT_NE(marked.pixel(at({120, 90}) + QPoint(-5, -5)), 0xFFFF6050);
    EXPECT_EQ(marked.pixel(at({30, 20}) + QPoint(-2, -2)), 0xFF6EBEFF);
    EXPECT_NE(marked.pixel(at({30, 20}) + QPoint(-5, 5)), 0xFF6EBEFF);
    EXPECT_EQ(different(marked, without, at({30, 90}), 30), 0);
    // What did not come, or lies beside the frame, has no mark.
    snapshot.hottest.status = "NULL";
    snapshot.coldest.at = {160, 20};
    const QImage none = imageOfSnapshot(snapshot);
    EXPECT_EQ(none, without);
}

TEST_F(Painting, RendersAtASizeThatShowsEveryPixel) {
    EXPECT_TRUE(m_view.rendered().isNull());
    m_view.resize(320, 200);
    const struct {
        int width, height, scale;
    } cases[] = {{384, 288, 2}, {160, 120, 5}, {32, 24, 24}, {768, 576, 1}, {1000, 700, 1}};
    for (const auto& c : cases) {
        Snapshot snapshot = synthetic(c.width, c.height);
        m_view.show(shared(snapshot));
        const QImage image = m_view.rendered();
        EXPECT_EQ(image.height(), c.scale * c.height + 20);
        EXPECT_EQ(image.width(), c.scale * c.width + 20 + colourBarWidth(m_view.fontMetrics()));
        for (const Pixel p : {Pixel{0, 0}, {c.width - 1, 0}, {c.width / 3, c.height - 1}})
            EXPECT_EQ(
                image.pixel(10 + c.scale * p.x + c.scale / 2, 10 + c.scale * p.y + c.scale / 2),
                snapshot.picture.pixels[snapshot.frame.index(p)]);
        EXPECT_EQ(image.pixel(5, image.height() / 2), ground);
    }
}

} // namespace
} // namespace irmcore::view::testing
