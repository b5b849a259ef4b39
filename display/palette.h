#pragma once

/// @file
/// Palettes: their entries, the built-in ones, and the colour table's layout.

#include <cstddef>
#include <cstdint>

/// One entry of a palette or colour table, in ITU-R BT.601: 16 is black and 235 white, 128 is no
/// chroma.
struct _yuv_item {
    std::uint8_t y;        ///< luma
    std::uint8_t u;        ///< blue-difference chroma, Cb
    std::uint8_t v;        ///< red-difference chroma, Cr
    std::uint8_t reserved; ///< carried along, never interpreted
};
static_assert(sizeof(_yuv_item) == 4 && offsetof(_yuv_item, u) == 1 && offsetof(_yuv_item, v) == 2);

/// The built-in palettes, by their index in `color_tables_yuv`.
enum COLOR_TABLE : int {
    COLOR_IRON = 0,          ///< black, violet, magenta, red, orange, yellow, nearly white
    COLOR_RAINBOW = 1,       ///< violet, blue, cyan, green, yellow, orange, red, dark red
    COLOR_GREY = 2,          ///< black to white
    COLOR_GREY_INVERTED = 3, ///< white to black
    COLOR_SPIA = 4,          ///< dark brown to pale beige
    COLOR_BLUE_RED = 5,      ///< blue, nearly white in the middle, yellow, orange, red
    COLOR_HOT_COLD = 6,      ///< blue, cyan, green, yellow, orange, red
    COLOR_FEATHER = 7,       ///< black, blue, green, yellow, orange, red, pink, pale yellow
    COLOR_CUSTOM = 8,        ///< `Custom_TAB`; also stands for a palette of the host's own
};
static_assert(sizeof(COLOR_TABLE) == 4);

/// `COLOR_IRON`, coldest entry first. Entries 0 to 255 are the palette; the last two are the same
/// in all built-in tables and of no use to the library.
[[gnu::visibility("default")]] extern const _yuv_item Iron_TAB[258];
/// `COLOR_RAINBOW`, likewise.
[[gnu::visibility("default")]] extern const _yuv_item Rainbow_TAB[258];
/// `COLOR_GREY`, likewise.
[[gnu::visibility("default")]] extern const _yuv_item Grey_TAB[258];
/// `COLOR_GREY_INVERTED`, likewise.
[[gnu::visibility("default")]] extern const _yuv_item Grey_Inverted_TAB[258];
/// `COLOR_SPIA`, likewise.
[[gnu::visibility("default")]] extern const _yuv_item Spia_TAB[258];
/// `COLOR_BLUE_RED`, likewise.
[[gnu::visibility("default")]] extern const _yuv_item Blue_Red_TAB[258];
/// `COLOR_HOT_COLD`, likewise.
[[gnu::visibility("default")]] extern const _yuv_item Hot_Cold_TAB[258];
/// `COLOR_FEATHER`, likewise.
[[gnu::visibility("default")]] extern const _yuv_item Feather_TAB[258];

/// All of them and `Custom_TAB` (luma 0 to 255), in the order of `COLOR_TABLE`.
[[gnu::visibility("default")]] extern const _yuv_item* const color_tables_yuv[9];
/// Entries of `color_tables_yuv`.
[[gnu::visibility("default")]] extern const int color_size;

namespace irmcore {

/// Entries of a palette: one for each step from the bottom of the window to its top.
inline constexpr int paletteSize = 256;
/// Entries of the FPGA's colour table: a palette and five special ones.
inline constexpr int colorTableSize = 261;
/// The special entries that an isotherm sets.
inline constexpr int isothermEntry = 258;
inline constexpr int belowWindowEntry = 259; ///< entry 0 before any colouring
inline constexpr int aboveWindowEntry = 260; ///< entry 255 before any colouring

} // namespace irmcore
