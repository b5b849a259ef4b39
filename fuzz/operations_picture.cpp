// The window, palettes, isotherms and composition.
#include "operation.h"

namespace irmfuzz {

namespace {

constexpr unsigned wholeTable = 1044 % 256; // the transfer result

/// What the FPGA has been given is the palette, while no isotherm is in it.
void told(Run& run, unsigned result) {
    run.out.add(result);
    if (result != wholeTable || run.faulty) // a seek that failed leads elsewhere
        return;
    const auto* plain = reinterpret_cast<const unsigned char*>(run.host().getCurrentPalette());
    std::array<std::uint8_t, 1044> shown{};
    irmsim::Board& board = run.fixture.camera.board();
    for (std::uint32_t i = 0; i < shown.size(); ++i)
        shown[i] = board.kept(0x1300 + i);
    run.out.add(shown.data(), shown.size());
    if (!run.host().getIsoSwitch())
        require(std::memcmp(plain, shown.data(), shown.size()) == 0, "the palette is shown");
    else
        require(std::memcmp(plain, shown.data() + 259 * 4, 3) == 0 &&
                    std::memcmp(plain + 255 * 4, shown.data() + 260 * 4, 3) == 0,
                "an isotherm leaves the window's ends at hand");
}

void window(Run& run) {
    Host& host = run.host();
    switch (run.in.below(5)) {
    case 0:
        host.setLevelSpanMode(run.in.takeEnum<Mode_t>());
        host.autoLevel(run.in.take<float>());
        host.autoSpan(run.in.take<float>());
        break;
    case 1:
        host.calcLevelSpan(static_cast<Mode_t>(run.in.below(4)), run.in.take<bool>());
        break;
    case 2: {
        const auto low = run.in.take<float>();
        require(host.handLevelSpan(low, run.in.take<float>()) == 1, "a window by hand is 1");
        break;
    }
    case 3: {
        const auto low = static_cast<float>(run.in.take<std::int8_t>());
        require(host.handLevelSpan(low, low + static_cast<float>(run.in.take<std::uint8_t>())) == 1,
                "a window by hand is 1");
        break;
    }
    default:
        run.out.add(host.startLevelSpanControl(run.in.take<bool>()));
    }
    require(m_levelSpanMaxAD >= 0 && m_levelSpanMaxAD <= 65535 && m_levelSpanMinAD >= 0 &&
                m_levelSpanMinAD <= 65535,
            "the limits are counts");
    run.out.add(host.m_level);
    run.out.add(host.m_span);
}

void palette(Run& run) {
    Host& host = run.host();
    const int index = run.in.take<bool>() ? run.in.take<int>() : static_cast<int>(run.in.below(10));
    const bool known = index >= 0 && index < color_size;
    require((host.getColorTable(index) != nullptr) == known, "there are nine palettes");
    switch (run.in.below(3)) {
    case 0: {
        const unsigned result = host.setStandardPaletteIndex(static_cast<COLOR_TABLE>(index));
        require(known || result == 255, "an index that is none is refused");
        told(run, known ? result : 255);
        break;
    }
    case 1: {
        const auto own = place<std::array<_yuv_item, 256>>(run.in);
        if (own)
            own->at(run.in.take<std::uint8_t>()).y = run.in.take<std::uint8_t>();
        const unsigned result = host.setCustomPalette(own ? own->data() : nullptr);
        require(own || result == 255, "no palette is refused");
        told(run, own ? result : 255);
        break;
    }
    default:
        told(run, host.palette_cal(nullptr));
    }
    require(host.getPaletteIndex() >= 0 && host.getPaletteIndex() <= COLOR_CUSTOM,
            "the palette is one of nine");
}

void isotherm(Run& run) {
    Host& host = run.host();
    Isotherm iso;
    iso.type = run.in.take<bool>() ? run.in.take<int>() : static_cast<int>(run.in.below(3));
    iso.reference = run.in.take<bool>() ? run.in.take<int>() : static_cast<int>(run.in.below(4));
    iso.useMinMax = run.in.take<bool>();
    iso.width = run.in.take<float>();
    iso.center = run.in.take<float>();
    iso.minTemp = run.in.take<float>();
    iso.maxTemp = run.in.take<float>();
    iso.lowRatio = run.in.take<float>();
    iso.highRatio = run.in.take<float>();
    constexpr std::array names{"Trans", "Green", "Black", "White", "Red", "Blue"};
    const unsigned name = run.in.below(8);
    if (name < names.size()) {
        std::memcpy(iso.color, names[name], std::strlen(names[name]) + 1);
    } else {
        const auto any = run.in.bytes(sizeof iso.color);
        std::memcpy(iso.color, any.data(), any.size());
    }
    host.setIsoPara(iso);
    if (run.in.take<bool>())
        told(run, host.setIsoSwitch(run.in.below(4) != 0));
}

void isoSwitch(Run& run) { told(run, run.host().setIsoSwitch(run.in.take<bool>())); }

void composition(Run& run) {
    Host& host = run.host();
    run.out.add(host.setImageMode(run.in.takeEnum<Image_Mode_t>()));
    run.out.add(host.set_CCD_Pipe_IR_Position(run.in.takeEnum<Image_Position_t>()));
    run.out.add(host.set_IR_Pipe_CCD_Position(run.in.takeEnum<Image_Position_t>()));
    const bool on = run.in.take<bool>();
    run.out.add(host.freeze_image(on));
    require(host.getFreezeImageStatus() == on, "the picture is frozen as it was set");
    host.setSaturation(on);
    host.saturation();
    require(host.getSaturation() == on, "the flag is as it was set");
}

constexpr std::array<Operation, 6> all{window, window, palette, isotherm, isoSwitch, composition};

} // namespace

Operations pictureOperations() { return {all.data(), all.size()}; }

} // namespace irmfuzz
