// The scale beside the picture: pixels, colour bar and temperatures are one mapping.
#include "apps/bench.h"
#include "apps/screen.h"
#include "apps/visible.h"
#include "support/host.h"

#include <map>

namespace {

using irmcore::app::Picture;
using irmcore::app::Rgb;

int code(const Rgb& color) { return color.r << 16 | color.g << 8 | color.b; }

/// 256 entries that no screen takes for one another: luma in steps of 8, chroma in the rest.
void makeDistinct(_yuv_item* palette) {
    for (int i = 0; i < 256; ++i)
        palette[i] = {static_cast<std::uint8_t>(60 + i / 8 * 4),
                      static_cast<std::uint8_t>(114 + i % 8 * 4), 128, 0};
}

TEST(Scale, pixelsReadThroughTheBarAreTheirTemperatures) {
    for (const int range : {0, 1}) {
        const irmsim::Scene scene = irmsim::Scene::gradient(384, 288, 15, range == 0 ? 60 : 350);
        irmcore::app::Bench bench(scene, {}, range);
        ASSERT_TRUE(bench.error().isEmpty());
        FPGA& host = bench.host();
        _yuv_item palette[256];
        makeDistinct(palette);
        IrTempStru low{}, high{};
        irmtest::printed([&] {
            host.startLevelSpanControl(true);
            host.setCustomPalette(palette);
            host.fpga_switch_colorBar(true);
            host.getAutoMinMaxTemp(&low, &high);
        });
        const Picture shown =
            irmcore::app::screen(bench.camera().board(), irmcore::app::visiblePicture(scene));
        const irmsim::Rect bar = irmcore::app::colourBar(shown.width, shown.height);
        const int rows = bar.y1 - bar.y0 + 1;
        ASSERT_EQ(rows % 256, 0);
        std::map<int, int> entryOf; // as the bar says
        for (int entry = 0; entry < 256; ++entry)
            entryOf[code(shown.at((bar.x0 + bar.x1) / 2, bar.y1 - entry * (rows / 256)))] = entry;
        ASSERT_EQ(entryOf.size(), 256U);

        const int scale = irmcore::app::screenScale(384);
        const double span = high.ad - low.ad;
        int last = 0;
        for (int x = 0; x * scale < bar.x0 - 2 * scale; ++x) {
            const auto found = entryOf.find(code(shown.at(x * scale, 200 * scale)));
            ASSERT_NE(found, entryOf.end()) << x;
            const int entry = found->second;
            EXPECT_GE(entry, last) << x; // the scene rises to the right
            last = entry;
            // The bar's step as counts, and the counts as temperatures: the truth lies within a
            // step of it. The window's gain is a whole number, which costs span / 16384 steps at
            // most.
            const double from = bench.camera().truthOf(low.ad + span * (entry - 1) / 256);
            const double to = bench.camera().truthOf(low.ad + span * (entry + 2) / 256);
            EXPECT_GT(bench.camera().truthAt(x, 200), from) << x;
            EXPECT_LT(bench.camera().truthAt(x, 200), to) << x;
            IrTempStru reading{};
            _fpga_point at{static_cast<std::uint16_t>(x), 200};
            host.getSpotTemp(0, 0, PARA_SYSTEM, {}, at, reading);
            EXPECT_NEAR((reading.ad - low.ad) / span * 256, entry + 0.5, 1.5) << x;
        }
        EXPECT_GT(last, 200);
        // The ends of the bar are the temperatures that the library gives for them.
        EXPECT_NEAR(low.temp, 15, 0.25);
        EXPECT_NEAR(high.temp, range == 0 ? 60 : 350, 0.25);
    }
}

} // namespace
