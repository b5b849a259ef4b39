#!/usr/bin/env python3
"""Makes palette_tables.cpp, the built-in palettes; with --check compares it with what is there.

Between their anchors Y, U and V each follow a monotone cubic (Fritsch and Butland's slopes): the
curve is smooth, turns only at anchors and never leaves the values of the two anchors it joins.
"""
import pathlib
import sys

POSITIONS = [0, 32, 64, 96, 128, 160, 192, 224, 255]
ANCHORS = {
    "Iron": [(16, 128, 128), (36, 180, 132), (59, 180, 165), (78, 165, 196), (103, 122, 201),
             (128, 64, 196), (161, 43, 179), (196, 37, 156), (233, 123, 129)],
    "Rainbow": [(67, 187, 173), (74, 216, 93), (153, 172, 27), (159, 123, 23), (185, 30, 104),
                (204, 19, 148), (141, 55, 195), (81, 90, 239), (57, 103, 199)],
    "Spia": [(33, 118, 149), (57, 106, 152), (94, 93, 156), (109, 94, 152), (126, 95, 148),
             (145, 80, 148), (153, 73, 149), (166, 91, 143), (182, 114, 136)],
    "Blue_Red": [(24, 163, 122), (79, 181, 82), (110, 173, 62), (164, 156, 89), (224, 133, 120),
                 (198, 65, 154), (177, 34, 170), (145, 53, 193), (90, 84, 213)],
    "Hot_Cold": [(40, 239, 109), (91, 210, 72), (126, 190, 47), (155, 173, 26), (155, 104, 25),
                 (182, 32, 98), (188, 28, 161), (151, 49, 188), (83, 89, 238)],
    "Feather": [(16, 128, 128), (57, 178, 97), (93, 195, 71), (120, 94, 84), (175, 36, 136),
                (162, 56, 179), (101, 115, 221), (158, 119, 182), (230, 106, 131)],
    "Custom": [(0, 128, 128), (87, 196, 217), (24, 208, 123), (142, 180, 28), (84, 105, 68),
               (182, 29, 127), (125, 57, 197), (129, 106, 189), (255, 128, 128)],
}
ORDER = ["Iron", "Rainbow", "Grey", "Grey_Inverted", "Spia", "Blue_Red", "Hot_Cold", "Feather",
         "Custom"]
TAIL = [(143, 153, 124), (150, 58, 40)]


def slopes(xs, ys):
    """Slopes at the anchors: a weighted harmonic mean, 0 where the curve turns."""
    h = [b - a for a, b in zip(xs, xs[1:])]
    d = [(b - a) / w for a, b, w in zip(ys, ys[1:], h)]
    inner = []
    for k in range(1, len(d)):
        if d[k - 1] * d[k] <= 0:
            inner.append(0.0)
            continue
        w1, w2 = 2 * h[k] + h[k - 1], h[k] + 2 * h[k - 1]
        inner.append((w1 + w2) / (w1 / d[k - 1] + w2 / d[k]))
    return [end_slope(h[0], h[1], d[0], d[1]), *inner, end_slope(h[-1], h[-2], d[-1], d[-2])]


def end_slope(h0, h1, d0, d1):
    """Three-point slope at an end, held back where it would overshoot."""
    slope = ((2 * h0 + h1) * d0 - h0 * d1) / (h0 + h1)
    if slope * d0 <= 0:
        return 0.0
    return 3 * d0 if d0 * d1 <= 0 and abs(slope) > 3 * abs(d0) else slope


def channel(ys):
    m = slopes(POSITIONS, ys)
    values = []
    for i in range(256):
        k = min(max(j for j, x in enumerate(POSITIONS) if x <= i), len(POSITIONS) - 2)
        h = POSITIONS[k + 1] - POSITIONS[k]
        t = (i - POSITIONS[k]) / h
        value = ((1 + 2 * t) * (1 - t) ** 2 * ys[k] + t * (1 - t) ** 2 * h * m[k]
                 + t * t * (3 - 2 * t) * ys[k + 1] + t * t * (t - 1) * h * m[k + 1])
        values.append(int(value + 0.5))
    return values


def palette(name):
    if name == "Grey":
        return [(16 + i * 859 // 1000, 128, 128) for i in range(256)]
    if name == "Grey_Inverted":
        return palette("Grey")[::-1]
    return list(zip(*(channel([anchor[c] for anchor in ANCHORS[name]]) for c in range(3))))


def source():
    lines = ["// Made by make_palettes.py, which says how; not to be edited by hand.",
             '#include "palette.h"', "", "// clang-format off"]
    for name in ORDER:
        entries = ["{%d,%d,%d,0}" % yuv for yuv in palette(name) + TAIL]
        # The last one has no exported name.
        lines.append(("static " if name == "Custom" else "") + f"const _yuv_item {name}_TAB[258] = {{")
        lines += ["    " + ", ".join(entries[i:i + 5]) + "," for i in range(0, 258, 5)]
        lines += ["};", ""]
    lines += ["const _yuv_item* const color_tables_yuv[9] = {"]
    lines += [f"    {name}_TAB," for name in ORDER]
    lines += ["};", "", "const int color_size = 9;", "// clang-format on"]
    return "\n".join(lines) + "\n"


if __name__ == "__main__":
    target = pathlib.Path(__file__).with_name("palette_tables.cpp")
    if sys.argv[1:] == ["--check"]:
        sys.exit(0 if target.read_text() == source() else f"{target} is not what this makes")
    target.write_text(source())
