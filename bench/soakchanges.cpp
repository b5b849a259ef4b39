// What a host changes, and what goes wrong.
#include "bench/soakhost.h"

#include <cerrno>

namespace irmsoak {

void Host::writeSettings() {
    irmtest::write("Parameter/Setting",
                   "[BiaoDing]\nTempRange=" + std::to_string(m_range) +
                       "\nIntTime0=120\nIntTime1=210\n[GlobalPara]\nEmiss=" +
                       irmtest::joined(m_believed.emissivity) +
                       "\nDistan=" + irmtest::joined(m_believed.distance) +
                       "\nOffset=0\nEnv=" + irmtest::joined(m_believed.envTemp) +
                       "\nHumid=" + irmtest::joined(m_believed.humidity) +
                       "\nReflec=" + irmtest::joined(m_believed.reflectedTemp) + "\n");
}

void Host::changeRange() {
    m_range = static_cast<int>(pick(2));
    writeSettings();
    m_host->changeTempRange(m_range, intTime());
    wait();
    m_host->setTempRange(m_range);
    limits();
    m_driver->calibrationRound();
}

void Host::changeLens() {
    const int before = m_host->getLenIndex();
    m_lens = static_cast<int>(pick(8) == 0 ? 2 : pick(2)); // of lens 2 there is no table
    m_camera.lens(m_lens);
    if (m_host->get_set_lenIndex() != before)
        m_driver->calibrationRound();
}

void Host::changeSettings() {
    m_believed = {between(0.7F, 1.0F), between(0, 50), between(0.2F, 0.8F), between(10, 35),
                  between(10, 35)};
    m_camera.surroundings(m_believed);
    writeSettings();
    if (pick(4) == 0)
        m_host->readTempSetup();
    m_host->setSystemTempPara();
}

void Host::changePicture() {
    switch (pick(6)) {
    case 0:
        m_host->setStandardPaletteIndex(static_cast<COLOR_TABLE>(pick(10))); // 9 is none
        break;
    case 1:
        m_host->setCustomPalette(m_host->getCurrentPalette());
        break;
    case 2:
        m_host->handLevelSpan(between(-30, 30), between(0, 200));
        break;
    case 3:
        m_host->startLevelSpanControl(pick(2) == 0);
        m_host->setLevelSpanMode(pick(2) == 0 ? LEVELSPAN_AUTO : LEVELSPAN_HAND);
        break;
    case 4: {
        Isotherm iso{};
        iso.type = static_cast<int>(pick(3));
        iso.center = between(10, 60);
        iso.lowRatio = between(0, 1);
        iso.reference = static_cast<int>(pick(4));
        m_host->setIsoPara(iso);
        m_host->setIsoSwitch(pick(3) != 0);
        break;
    }
    default:
        m_host->setImageMode(static_cast<Image_Mode_t>(pick(8)));
        m_host->set_CCD_Pipe_IR_Position(static_cast<Image_Position_t>(pick(4)));
        m_host->set_mix_zoom(static_cast<int>(pick(600)));
        m_host->fpga_switch_colorBar(pick(2) == 0);
        break;
    }
}

void Host::changeParameters() {
    // One in three is refused.
    m_host->setSystemTempSetup({between(0.5F, 1.3F), between(0, 60), between(-3, 3), 0});
    m_host->setEnvTemp(between(-10, 40));
    m_host->setHumid(between(0, 1));
    m_host->setReflecTemp(between(-10, 60));
    m_host->startBiaoDing(pick(2) == 0);
    TempInfoTab tab{};
    m_host->readTable("etc/calc_len1_temp1.conf", &tab);
    m_host->checkBiaoDingTab();
}

void Host::talk() {
    unsigned short word = 0;
    unsigned int drift = 0;
    char version[15];
    m_host->getSerialVSK(&word);
    m_host->getSerialSum(&word);
    m_host->getSerial()->readDeltaAD(&drift);
    m_host->getSerial()->readCoreCpuVersion(version);
    m_host->setSerialVSK(static_cast<unsigned short>(1800 + pick(200)));
    wait();
}

void Host::changeScene() {
    m_camera.scene(pick(3) == 0 ? irmsim::Scene::gradient(width, height, -30.0, 170.0)
                                : irmsim::Scene::bench(width, height));
}

void Host::restartCore() {
    m_camera.corePowerUp();
    m_host->changeTempRange(m_range, intTime());
    wait();
    m_host->autoShutter(false);
    wait();
    m_driver->calibrationRound();
}

void Host::change() {
    ++m_changes;
    switch (pick(12)) {
    case 0:
        changeRange();
        break;
    case 1:
        changeLens();
        break;
    case 2:
        changeSettings();
        break;
    case 3:
        changeParameters();
        break;
    case 4:
        talk();
        break;
    case 5:
        freeze(true);
        break;
    case 6:
        changeScene();
        break;
    case 7:
        restartCore();
        break;
    default:
        changePicture();
        break;
    }
}

void Host::fault() {
    using irmsim::Fault;
    using irmsim::Lasting;
    constexpr std::array<int, 5> errors{EIO, ENODEV, EINTR, EAGAIN, EBUSY};
    m_faultEnds = m_tick + 1 + pick(30 * framesASecond);
    const int error = errors[pick(errors.size())];
    const Lasting lasting = pick(4) == 0 ? Lasting::fromThenOn : Lasting::once;
    switch (pick(9)) {
    case 0:
        m_camera.failTransfer(1 + pick(40), Fault::refused(error), lasting);
        break;
    case 1:
        m_camera.failTransfer(1 + pick(40), Fault::cutTo(pick(30)), lasting);
        break;
    case 2:
        m_camera.failSeek(1 + pick(40), error, lasting);
        break;
    case 3:
        m_camera.unplug();
        break;
    case 4:
        m_camera.unplugPort();
        break;
    case 5:
        m_camera.failPortTransfer(
            1 + pick(6), pick(2) == 0 ? Fault::refused(error) : Fault::cutTo(pick(4)), lasting);
        break;
    case 6:
        m_camera.coreSilent(true);
        break;
    case 7:
        m_camera.coreGarbled(static_cast<int>(pick(10)));
        break;
    default:
        m_camera.coreLate(between(0.01F, 4.0F));
        break;
    }
    if (pick(2) == 0)
        talk();
}

void Host::liftFaults() {
    m_faultEnds = 0;
    m_camera.plugIn().plugInPort().coreSilent(false).coreGarbled(-1).coreLate(0);
    m_camera.failTransfer(0, irmsim::Fault::refused(EIO));
    m_camera.failSeek(0, EIO).failPortTransfer(0, irmsim::Fault::refused(EIO));
}

} // namespace irmsoak
