// The register operations, with any arguments.
#include "device/registers.h"
#include "operation.h"

#include <cerrno>
#include <cmath>
#include <vector>

namespace irmfuzz {

namespace {

bool refusedOrDone(unsigned result) { return result == 0 || result == 255; }

void transfer(Run& run, bool write) {
    const auto address = run.in.take<std::uint16_t>();
    const auto n = run.in.take<std::uint8_t>();
    std::vector<std::uint8_t> bytes = write ? run.in.bytes(n) : std::vector<std::uint8_t>(n);
    const bool none = run.in.below(8) == 7;
    const int length = run.in.below(8) == 7 ? -1 : n;
    run.out.add(write ? run.host().writeData(address, none ? nullptr : bytes.data(), length)
                      : run.host().readData(address, none ? nullptr : bytes.data(), length));
    run.out.add(bytes.data(), bytes.size());
}

void version(Run& run) {
    const auto text = place<std::array<char, 15>>(run.in);
    run.out.add(run.host().fpga_get_version(text ? text->data() : nullptr));
}

void state(Run& run) {
    Host& host = run.host();
    const unsigned lens = host.fpga_read_lenIndex();
    require(lens <= 6 || lens == 255, "a lens is 0 to 6, or 255");
    for (const unsigned on : {host.fpga_get_IR_power(), host.getLampStatus(), host.getLaserStatus(),
                              host.fpga_get_freeze_status()}) {
        require(on <= 1, "a state is 0 or 1");
        run.out.add(on);
    }
    run.out.add(lens);
}

void climate(Run& run) {
    const auto celsius = place<float>(run.in);
    const auto percent = place<float>(run.in);
    const int result = run.host().fpga_get_sht11_temp_humid(celsius.get(), percent.get());
    require(result == 0 || result == -1, "the climate sensor answers or not");
    require(result != 0 || (celsius && percent), "a null pointer is refused");
    require(!celsius || std::isfinite(*celsius), "the air's temperature is finite");
    require(!percent || std::isfinite(*percent), "the air's humidity is finite");
    run.out.add(result);
}

void temperatures(Run& run) {
    const auto celsius = place<float>(run.in);
    const int result = run.in.take<bool>() ? run.host().fpga_read_shutterTemp(celsius.get())
                                           : run.host().fpga_read_sensorTemp(celsius.get());
    require(result == (celsius ? 0 : -1), "only a null pointer is refused");
    require(!celsius || std::fabs(*celsius) <= 128.0F, "a temperature fits its register");
}

void statistics(Run& run) {
    Host& host = run.host();
    for (const unsigned ad :
         {host.fpga_get_auto_max(), host.fpga_get_auto_min(), host.fpga_get_auto_averg(),
          host.fpga_get_fpga_level(), host.fpga_get_fpga_span(), host.fpga_get_level(),
          host.fpga_get_span()})
        run.out.add(ad);
    const auto high = place<unsigned short>(run.in), low = place<unsigned short>(run.in);
    run.out.add(host.fpga_get_zft_maxMin(high.get(), low.get()));
    run.out.add(host.fpga_get_zft_most(high.get()));
}

void extremes(Run& run) {
    const auto max = place<_point_max>(run.in);
    const auto min = place<_point_min>(run.in);
    const unsigned a = run.host().fpga_point_max_get(max.get());
    const unsigned b = run.host().fpga_point_min_get(min.get());
    require(refusedOrDone(a) && refusedOrDone(b), "an extreme is delivered or not");
    require((max || a == 255) && (min || b == 255), "a null pointer is refused");
    run.out.add(a);
    run.out.add(b);
}

void point(Run& run) {
    const auto slot = run.in.take<std::uint8_t>();
    const auto at = place<_fpga_point>(run.in);
    const auto ad = place<unsigned short>(run.in);
    const unsigned set = run.host().fpga_point_position_set(slot, at.get());
    require(refusedOrDone(set) && (set == 255 || (slot <= 16 && at)), "bad spots are refused");
    const unsigned got = run.host().fpga_point_ad_get(slot, ad.get());
    require(got == 255 || (slot <= 16 && ad), "bad spots are not read");
    run.out.add(got);
}

void area(Run& run) {
    const auto slot = run.in.take<std::uint8_t>();
    const auto at = place<_area>(run.in);
    const auto values = place<_area_val>(run.in);
    const unsigned set = run.host().fpga_area_set(slot, at.get());
    require(refusedOrDone(set) && (set == 255 || (slot <= 16 && at)), "bad areas are refused");
    const unsigned got = run.host().fpga_area_val_get(slot, values.get());
    require(refusedOrDone(got) && (got == 255 || (slot <= 16 && values)), "bad areas are not read");
    run.out.add(got);
}

void line(Run& run) {
    const int which = run.in.take<bool>() ? static_cast<int>(run.in.below(4)) : run.in.take<int>();
    const bool known = which == 1 || which == 2;
    const int shown = run.host().fpga_display_line(which, run.in.take<bool>());
    const auto x = run.in.take<std::uint16_t>();
    const int set = run.host().fpga_set_line_position(which, x, run.in.take<std::uint16_t>());
    require((shown == -1) == !known && (set == -1) == !known, "lines are 1 and 2");
}

void frame(Run& run) {
    if (run.frames++ > 0)
        return;
    const bool large = run.in.below(16) == 15;
    const auto ad = std::make_unique<unsigned short[]>(large ? 110592 : 19200);
    const bool none = run.in.below(8) == 7;
    unsigned short* out = none ? nullptr : ad.get();
    const unsigned result =
        large ? run.host().fpga_read_IRAD_384(out) : run.host().fpga_read_IRAD(out);
    require(result == (none ? 255U : 0U), "a frame is read, but not to nowhere");
    run.out.add(ad[0]);
}

void colorTable(Run& run) {
    const auto n = run.in.take<std::uint16_t>() % 1045;
    std::vector<unsigned char> table(1044);
    run.out.add(run.host().fpga_colorTable_get(run.in.below(8) == 7 ? nullptr : table.data(),
                                               static_cast<int>(n)));
    run.out.add(table.data(), table.size());
    run.out.add(run.host().fpga_colorTable_set(run.in.below(8) == 7 ? nullptr : table.data()));
}

void window(Run& run) {
    const auto level = run.in.take<std::uint16_t>();
    run.out.add(run.host().fpga_set_levelSpan(level, run.in.take<unsigned>()));
    run.out.add(run.host().fpga_start_level_span_control(run.in.take<bool>()));
    run.out.add(run.host().fpga_set_iso_enable(run.in.take<bool>()));
    run.out.add(run.host().fpga_set_iso_type(run.in.take<std::uint8_t>()));
    run.out.add(run.host().fpga_set_iso_min(level));
    run.out.add(run.host().fpga_set_iso_max(level));
}

void composition(Run& run) {
    Host& host = run.host();
    const auto mode = place<unsigned char>(run.in);
    run.out.add(host.fpga_get_image(mode.get()));
    run.out.add(host.fpga_set_image(run.in.takeEnum<Image_Mode_t>()));
    run.out.add(host.fpga_set_ccd_pipe_ir_position(run.in.take<int>()));
    run.out.add(host.fpga_set_ir_pipe_ccd_position(run.in.take<int>()));
    run.out.add(host.fpga_set_CCD_Mix_IR_Size(run.in.take<int>()));
    run.out.add(host.fpga_set_IR_Mix_CCD_Size(run.in.take<int>()));
    run.out.add(host.set_CCD_mix_IR_percent(run.in.take<float>()));
    run.out.add(host.set_IR_mix_CCD_percent(run.in.take<float>()));
}

void mixing(Run& run) {
    Host& host = run.host();
    run.out.add(host.set_mix_dx(run.in.take<char>()));
    run.out.add(host.set_mix_dy(run.in.take<char>()));
    run.out.add(host.set_mix_zoom(run.in.take<int>()));
    run.out.add(host.get_mix_dx());
    run.out.add(host.get_mix_dy());
    run.out.add(host.get_mix_zoom());
}

void switches(Run& run) {
    Host& host = run.host();
    const bool on = run.in.take<bool>();
    for (const unsigned result :
         {host.fpga_open_saturation(on), host.fpga_switch_colorBar(on), host.fpga_freeze_image(on),
          host.fpga_open_alarm(on), host.openLaser(on), host.fpga_open_CCD(on),
          host.fpga_set_arm_lcd_jingDu(run.in.take<std::uint8_t>()),
          host.start_arm_lcd(run.in.take<char>()), host.setADV7179Mode(run.in.take<int>())})
        run.out.add(result);
}

void failing(Run& run) {
    using irmsim::Fault, irmsim::Lasting;
    run.faulty = true;
    const unsigned n = 1 + run.in.below(16);
    const Lasting lasting = run.in.take<bool>() ? Lasting::fromThenOn : Lasting::once;
    switch (run.in.below(4)) {
    case 0:
        run.fixture.camera.failTransfer(n, Fault::refused(EIO), lasting);
        break;
    case 1:
        run.fixture.camera.failTransfer(n, Fault::cutTo(run.in.below(4)), lasting);
        break;
    case 2:
        run.fixture.camera.failSeek(n, EINVAL, lasting);
        break;
    default:
        run.in.take<bool>() ? run.fixture.camera.unplug() : run.fixture.camera.plugIn();
    }
}

void word(Run& run) { // a register changes
    const auto& entry = irmcore::reg::map[run.in.below(irmcore::reg::map.size())];
    const auto value = run.in.take<std::uint16_t>();
    run.fixture.camera.board().unpoke(entry.address);
    run.fixture.camera.board().poke(entry.address, {static_cast<std::uint8_t>(value & 0xFF),
                                                    static_cast<std::uint8_t>(value >> 8)});
}

constexpr std::array<Operation, 20> all{[](Run& run) { transfer(run, false); },
                                        [](Run& run) { transfer(run, true); },
                                        version,
                                        state,
                                        climate,
                                        temperatures,
                                        statistics,
                                        extremes,
                                        point,
                                        area,
                                        line,
                                        frame,
                                        colorTable,
                                        window,
                                        composition,
                                        mixing,
                                        switches,
                                        failing,
                                        word,
                                        word};

} // namespace

Operations boardOperations() { return {all.data(), all.size()}; }

} // namespace irmfuzz
