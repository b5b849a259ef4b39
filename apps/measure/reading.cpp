#include "reading.h"

#include "../../core/fpga.h"

#include <algorithm>
#include <array>

namespace irmcore::app::measuring {

QString statusName(unsigned char status) {
    constexpr std::array names{"OK", "L", "LE", "HE", "H"};
    return QString::fromLatin1(status < names.size() ? names[status] : "NULL");
}

std::optional<ThermalFrame> readThermalFrame(FPGA& host, bool big) {
    ThermalFrame frame;
    frame.width = big ? 384 : 160;
    frame.height = big ? 288 : 120;
    const std::size_t pixels =
        static_cast<std::size_t>(frame.width) * static_cast<std::size_t>(frame.height);
    frame.counts.assign(pixels, 0);
    frame.celsius.resize(pixels);
    frame.status.resize(pixels);
    const std::size_t part = big ? pixels / 8 : pixels;
    if (big)
        host.fpga_read_IRAD_384(frame.counts.data());
    else
        host.fpga_read_IRAD(frame.counts.data());
    // Nothing else tells of a part that did not come, or not whole.
    for (std::size_t last = part - 1; last < pixels; last += part)
        if (frame.counts[last] == 0)
            return std::nullopt;
    host.getFrameTemp(frame.counts.data(), static_cast<int>(pixels), PARA_SYSTEM, {},
                      frame.celsius.data(), frame.status.data());
    return frame;
}

Measured ThermalFrame::at(Pixel pixel) const {
    const std::size_t i = index(pixel);
    return {pixel, counts[i], statusName(status[i]), static_cast<double>(celsius[i])};
}

int ThermalFrame::notOk() const {
    return static_cast<int>(
        std::count_if(status.begin(), status.end(), [](unsigned char s) { return s != 0; }));
}

} // namespace irmcore::app::measuring
