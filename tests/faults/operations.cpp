#include "operations.h"

#include "sim/settle.h"

namespace irmtest {

namespace {

using F = FPGABottom;
using S = Serial;

std::string spot(Host& h, int type) {
    IrTempStru out{};
    _fpga_point at{3, 4};
    const int result = h.host->getSpotTemp(1, type, PARA_CUSTOM, {0.8F, 10, 1, 0}, at, out);
    return joined(result, text(out), at.x, at.y);
}

/// A frame of `count` words; the low bits of `given` say which of the three buffers there are.
std::string frame(Host& h, int count, int given) {
    const unsigned short ad[] = {32768, 36000, 0, 65535};
    float temp[4]{};
    unsigned char status[4]{};
    const int result = h.host->getFrameTemp((given & 1) != 0 ? ad : nullptr, count, PARA_CUSTOM,
                                            {0.8F, 10, 1, 0}, (given & 2) != 0 ? temp : nullptr,
                                            (given & 4) != 0 ? status : nullptr);
    return joined(result, temp[0], temp[1], temp[3], int{status[0]}, int{status[2]});
}

/// Runs something as with a core of another command generation.
template <typename Run>
std::string generation(Host& h, int number, Run run) {
    h.host->m_coreVersionNum = number;
    run(*h.host);
    h.host->m_coreVersionNum = 1;
    return "none";
}

std::string withIsotherm(Host& h, int reference) {
    Isotherm iso{};
    iso.reference = reference;
    h.host->setIsoPara(iso);
    h.host->setIsoSwitch(true);
    h.host->calcLevelSpan(LEVELSPAN_ZFT, false);
    return joined(int{h.host->setIsoSwitch(false)});
}

std::vector<Operation> listed() {
    std::vector<Operation> all;
    // The register interface.
    add<&F::fpga_get_version, &F::fpga_get_image, &F::fpga_get_zft_maxMin, &F::fpga_get_zft_most,
        &F::fpga_point_ad_get, &F::fpga_colorTable_get, &F::fpga_set_image,
        &F::fpga_set_ccd_pipe_ir_position, &F::fpga_set_ir_pipe_ccd_position, &F::fpga_display_line,
        &F::fpga_set_line_position, &F::fpga_open_saturation, &F::fpga_switch_colorBar,
        &F::fpga_freeze_image, &F::fpga_open_alarm, &F::openLaser, &F::openLamp, &F::fpga_open_CCD,
        &F::fpga_set_CCD_Mix_IR_Size, &F::fpga_set_IR_Mix_CCD_Size, &F::set_CCD_mix_IR_percent,
        &F::set_IR_mix_CCD_percent, &F::set_mix_dx, &F::set_mix_dy, &F::set_mix_zoom,
        &F::fpga_set_output_mode, &F::fpga_start_arm_lcd, &F::fpga_set_arm_lcd_jingDu,
        &F::fpga_start_level_span_control, &F::fpga_set_levelSpan, &F::fpga_set_iso_enable,
        &F::fpga_set_iso_type, &F::fpga_set_iso_min, &F::fpga_set_iso_max, &F::fpga_colorTable_set,
        &F::readData, &F::writeData>(all, Rule::last);
    add<&F::fpga_point_max_get, &F::fpga_point_min_get, &F::fpga_point_position_set,
        &F::fpga_area_set, &F::fpga_area_val_get>(all, Rule::all);
    add<&F::fpga_get_IR_power, &F::getLampStatus, &F::getLaserStatus, &F::fpga_get_freeze_status,
        &F::get_mix_zoom, &F::get_mix_dx, &F::get_mix_dy, &F::fpga_get_auto_max,
        &F::fpga_get_auto_min, &F::fpga_get_auto_averg, &F::fpga_get_fpga_level,
        &F::fpga_get_level>(all, Rule::value, "0");
    add<&F::fpga_read_lenIndex>(all, Rule::value, "6"); // the lens of code 0
    add<&F::fpga_get_fpga_span>(all, Rule::value, "255");
    add<&F::fpga_get_span>(all, Rule::value, "16448");
    add<&F::fpga_get_sht11_temp_humid, &F::fpga_read_shutterTemp, &F::fpga_read_sensorTemp,
        &F::fpga_read_IRAD, &F::fpga_read_IRAD_384>(all, Rule::same);
    all.push_back({"FPGABottom::FPGABottom", Rule::alone, [](Host&) {
                       F board;
                       return joined(int{board.fpga_get_freeze_status()});
                   }});

    // The link.
    add<&S::generateSum, &S::unpackData, &S::packData, &S::set_speed, &S::signalThread,
        &S::autoShutter, &S::insideShutter, &S::insideShutterNoVSK, &S::outsideShutter,
        &S::setIntTime, &S::setVSK, &S::changeTempRange, &S::readDeltaAD, &S::readSerialSum,
        &S::readSensor, &S::readCoreCpuVersion, &S::readCoreFPGAVersion, &S::readPowerStatus,
        &S::readSensorTemp, &S::setTempRange>(all, Rule::same);
    add<&S::readSerialVSK>(all, Rule::vsk);
    add<&S::writeData>(all, Rule::sent);
    with<&S::set_Parity, 8, 1, 'N'>(all, Rule::parity);
    with<&S::set_speed, 38400>(all, Rule::same);
    all.back().name += " twice";
    add<&S::readData>(all, Rule::got);
    add<&S::shutDown, &S::closeSerial, &S::restoreSerial>(all, Rule::same);
    const auto run = [&](const char* name) {
        return &std::find_if(all.begin(), all.end(), [=](auto& op) {
                    return op.name == name;
                })->run;
    };
    *run("Serial::readData") = [](Host& h) {
        unsigned char bytes[] = {7, 7, 7, 7};
        h.camera.coreSends({1, 2, 3, 4}, 0);
        const int count = h.host->getSerial()->readData(bytes, 4);
        const unsigned char* received = h.host->getSerial()->*&Link::m_recvBuf;
        return joined(count, int{bytes[0]}, int{bytes[3]}, int{received[3]});
    };
    *run("Serial::shutDown") = [](Host& h) {
        h.camera.corePowerUp();
        const int result = h.host->getSerial()->shutDown();
        irmsim::settle(std::chrono::seconds(1));
        h.camera.corePowerUp();
        return joined(result);
    };
    *run("Serial::closeSerial") = *run("Serial::restoreSerial") = [](Host& h) {
        h.host->getSerial()->closeSerial();
        h.host->getSerial()->restoreSerial();
        return joined(int{h.host->getSerial()->insideShutter()});
    };
    all.push_back({"Serial::Serial", Rule::alone, [](Host&) {
                       Link link;
                       unsigned short sum = 9;
                       return link.m_fd < 0 ? "none" : joined(link.readSerialSum(&sum), sum);
                   }});

    // The façade.
    all.push_back({"FPGA::FPGA", Rule::alone, [](Host&) {
                       Probe p;
                       return joined(p.m_tempRange, p.getLenIndex(), p.m_tempInfoTab.tempNum,
                                     p.m_level, m_levelSpanMaxAD, p.m_sysTempSetup.emiss);
                   }});
    using Tables = int (FPGA::*)(int, int);
    using Table = int (FPGA::*)();
    using Modifies = void (FPGA::*)(int, int);
    using Modify = void (FPGA::*)(int);
    add<&FPGA::init, &FPGA::getDllVersion, &FPGA::getCoreFPGAVerisonStr,
        &FPGA::getCoreCpuVerisonStr, &FPGA::getCoreVersionNum, &FPGA::getLenIndex, &FPGA::getIRPara,
        &FPGA::getSerial, &FPGA::setSystemTempPara, &FPGA::readTempSetup, &FPGA::changeTempRange,
        &FPGA::setTempRange, &FPGA::setVSK, &FPGA::setTempRangeMinMax, &FPGA::setIntTime,
        &FPGA::insideShutter, &FPGA::insideShutterNoVSK, &FPGA::autoShutter, &FPGA::setSerialVSK,
        &FPGA::getSerialSum, &FPGA::getDeltaTemp, &FPGA::updateSensorTemp, &FPGA::setSensorTemp,
        &FPGA::getSensorTemp, &FPGA::setShutterTemp, &FPGA::getShutterTemp, &FPGA::setLenTemp,
        &FPGA::getLenTemp, &FPGA::getModifyShutterTemp, &FPGA::updateShutterTemp,
        &FPGA::getTempInfoTab, static_cast<Tables>(&FPGA::setSystemAdToTempTab),
        static_cast<Table>(&FPGA::setSystemAdToTempTab), &FPGA::readTable, &FPGA::startBiaoDing,
        &FPGA::checkBiaoDingTab, &FPGA::BiaoDingXiuzheng, &FPGA::BiaoDingXiuzhengGet,
        &FPGA::getModifyValue, static_cast<Modifies>(&FPGA::updateModify),
        static_cast<Modify>(&FPGA::updateModify), &FPGA::setSystemTempSetup,
        &FPGA::getSystemTempSetup, &FPGA::setEnvTemp, &FPGA::setHumid, &FPGA::setReflecTemp,
        &FPGA::getMinMaxTemp, &FPGA::getAutoMinMaxTemp, &FPGA::setLevelSpanMode, &FPGA::autoLevel,
        &FPGA::autoSpan, &FPGA::calcLevelSpan, &FPGA::handLevelSpan, &FPGA::getColorTable,
        &FPGA::getPaletteIndex, &FPGA::getCurrentPalette, &FPGA::getIsoSwitch, &FPGA::getIsoPara,
        &FPGA::setIsoPara, &FPGA::getIsoTempStru, &FPGA::setIsoIndex, &FPGA::getFreezeImageStatus,
        &FPGA::setSaturation, &FPGA::getSaturation, &FPGA::saturation>(all, Rule::same);
    add<&FPGA::start_arm_lcd, &FPGA::startLevelSpanControl, &FPGA::setStandardPaletteIndex,
        &FPGA::setCustomPalette, &FPGA::palette_cal, &FPGA::setIsoSwitch, &FPGA::setImageMode,
        &FPGA::set_CCD_Pipe_IR_Position, &FPGA::set_IR_Pipe_CCD_Position, &FPGA::freeze_image,
        &FPGA::setADV7179Mode>(all, Rule::last);
    add<&FPGA::getSerialVSK>(all, Rule::vsk);
    add<&FPGA::getSpotAD>(all, Rule::value, "0");
    add<&FPGA::getLineTemp, &FPGA::getAreaTemp>(all, Rule::placed);
    with<&FPGA::getSpotTemp>(all, Rule::placed);
    all.back().run = [](Host& h) { return spot(h, 0); };
    with<&FPGA::getFrameTemp>(all, Rule::same);
    all.back().run = [](Host& h) { return frame(h, 4, 7); };
    all.back().abuse = [](Host& h, Random& random) { // no count above what its buffers hold
        frame(h, static_cast<int>(random() % 8) - 3, static_cast<int>(random() % 8));
    };
    add<&FPGA::updateDeltaTemp, &FPGA::get_set_lenIndex, &TempHandler::irAD2Temp>(all, Rule::open);

    // What depends on arguments and state.
    const Operation variants[] = {
        {"hottest spot", Rule::located, [](Host& h) { return spot(h, 1); }},
        {"coldest spot", Rule::located, [](Host& h) { return spot(h, 2); }},
        {"isotherm by temperature", Rule::open, [](Host& h) { return withIsotherm(h, 0); }},
        {"isotherm by palette", Rule::open, [](Host& h) { return withIsotherm(h, 1); }},
        {"init of generation 0", Rule::open,
         [](Host& h) { return generation(h, 0, [](Probe& p) { p.init(); }); }},
        {"range of generation 0", Rule::open,
         [](Host& h) { return generation(h, 0, [](Probe& p) { p.changeTempRange(0, 100); }); }},
        {"sensor of generation 0", Rule::open,
         [](Host& h) {
             m_vskTemp = 60;
             return generation(h, 0, [](Probe& p) {
                 p.setSerialVSK(1875);
                 irmsim::settle(std::chrono::seconds(1));
                 p.updateSensorTemp(true);
             });
         }},
        {"init of generation -1", Rule::open,
         [](Host& h) { return generation(h, -1, [](Probe& p) { p.init(); }); }},
        {"shutter while frozen", Rule::open,
         [](Host& h) {
             h.host->freeze_image(true);
             h.host->updateShutterTemp(true);
             h.host->freeze_image(false);
             h.host->updateShutterTemp(true);
             return joined(h.host->getModifyShutterTemp());
         }},
    };
    all.insert(all.end(), std::begin(variants), std::end(variants));
    return all;
}

} // namespace

const std::vector<Operation>& operations() {
    static const std::vector<Operation> all = listed();
    return all;
}

} // namespace irmtest
