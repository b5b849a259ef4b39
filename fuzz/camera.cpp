#include "camera.h"

#include "device/frame.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <iterator>
#include <sched.h>
#include <string_view>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace irmfuzz {

namespace {

namespace fs = std::filesystem;

std::string s_place;

/// A private working directory, until the program ends.
void enterPlace() {
    s_place = fs::temp_directory_path() / "irmcore-fuzz-XXXXXX";
    require(mkdtemp(s_place.data()) != nullptr, "there is room for a working directory");
    fs::current_path(s_place);
    fs::create_directory("Parameter");
    fs::create_directory("etc");
    std::atexit([] {
        std::error_code ignored;
        fs::current_path(fs::temp_directory_path(), ignored);
        fs::remove_all(s_place, ignored);
    });
    constexpr std::string_view table =
        "[ParaSet]\nMaxAD=B000\nMinTemp=-20\nMaxTemp=400\nTempNum=2\n"
        "[Temp2AD]\n-20=7000\n400=B000\n";
    for (const char* file : {"etc/calc_len0_temp0.conf", "etc/calc_len0_temp1.conf"})
        writeFile(file, table.data(), table.size());
}

/// Waits for what the link's worker does.
template <typename Done>
void waitUntil(Done done) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    for (unsigned i = 0; !done(); ++i) {
        sched_yield();
        if (i % 1024 == 1023)
            require(std::chrono::steady_clock::now() < end, "a command is sent");
    }
}

Host& newHost(irmsim::Camera& camera, Line& line) {
    enterPlace();
    camera.scene(irmsim::Scene::uniform(8, 6, 25.0)).logging(false).autoShutterPeriod(1e9);
    camera.coreReplacedBy(
        [&line](const std::uint8_t* bytes, std::size_t n) { return line.receive(bytes, n); });
    require(camera.install(), "no other camera is installed");
    auto* host = new Host; // to the program's end
    for (int i = 0; i < 3; ++i)
        host->calcLevelSpan(LEVELSPAN_AUTO, false); // it counts its first calls
    return *host;
}

} // namespace

Host::Host() : link(nullptr) {
    delete m_serial;
    m_serial = link = new Link(this);
}

Host::State Host::state() const {
    State s{*m_sysTempHandler,
            *m_queryTempHandler,
            m_paletteIndex,
            {},
            m_saturation,
            m_isoSwitch,
            m_freeze,
            m_isStarLevelSpanControl,
            m_isoHandler,
            m_isoMinStru,
            m_isoMaxStru,
            m_level,
            m_span,
            m_vskValue0,
            m_vskValue1,
            m_sysTempSetup,
            m_fileTempSetup,
            m_levelSpanMode,
            m_lenTemp,
            m_shutterTemp,
            m_sensorTemp,
            m_modifyValue,
            m_deltaTemp,
            m_modifyShutterTemp,
            m_vskTemp,
            m_minModifyTemp,
            m_maxModifyTemp,
            m_lenIndex,
            m_tempRange,
            m_coreVersionNum,
            m_imageMode,
            m_levelSpanMaxAD,
            m_levelSpanMinAD,
            m_tempInfoTab,
            m_irPara,
            {}};
    std::copy(std::begin(m_colorTable), std::end(m_colorTable), s.colorTable.begin());
    std::copy(std::begin(s_modify), std::end(s_modify), s.modify.begin());
    return s;
}

void Host::take(const State& s) {
    *m_sysTempHandler = s.sysTempHandler;
    *m_queryTempHandler = s.queryTempHandler;
    m_paletteIndex = s.paletteIndex;
    std::copy(s.colorTable.begin(), s.colorTable.end(), m_colorTable);
    m_saturation = s.saturation;
    m_isoSwitch = s.isoSwitch;
    m_freeze = s.freeze;
    m_isStarLevelSpanControl = s.control;
    m_isoHandler = s.isoHandler;
    m_isoMinStru = s.isoMin;
    m_isoMaxStru = s.isoMax;
    m_level = s.level;
    m_span = s.span;
    m_vskValue0 = s.vskValue0;
    m_vskValue1 = s.vskValue1;
    m_sysTempSetup = s.sysTempSetup;
    m_fileTempSetup = s.fileTempSetup;
    m_levelSpanMode = s.levelSpanMode;
    m_lenTemp = s.lenTemp;
    m_shutterTemp = s.shutterTemp;
    m_sensorTemp = s.sensorTemp;
    m_modifyValue = s.modifyValue;
    m_deltaTemp = s.deltaTemp;
    m_modifyShutterTemp = s.modifyShutterTemp;
    m_vskTemp = s.vskTemp;
    m_minModifyTemp = s.minModifyTemp;
    m_maxModifyTemp = s.maxModifyTemp;
    m_lenIndex = s.lenIndex;
    m_tempRange = s.tempRange;
    m_coreVersionNum = s.coreVersionNum;
    m_imageMode = s.imageMode;
    m_levelSpanMaxAD = s.maxAd;
    m_levelSpanMinAD = s.minAd;
    m_tempInfoTab = s.tempInfoTab;
    m_irPara = s.irPara;
    std::copy(s.modify.begin(), s.modify.end(), s_modify);
}

std::vector<irmsim::Reply> Line::receive(const std::uint8_t* bytes, std::size_t n) {
    last.assign(bytes, bytes + n);
    if (!anyBytes) {
        require(n >= 6 && n <= 128 && bytes[0] == 0xFF && bytes[1] == 0xA5 && bytes[n - 1] == 0x5A,
                "a frame has its header, its end and room in 128 bytes");
        require(bytes[3] == n - 6, "a frame's length is that of its payload");
        require(irmcore::frame::checksum(bytes + 2, n - 3) == 0, "a frame's checksum is right");
    }
    if (!replies.empty()) {
        std::vector<irmsim::Reply> given = std::move(replies.front());
        replies.erase(replies.begin());
        for (const irmsim::Reply& reply : given)
            latest = std::max(latest, reply.after);
        return given;
    }
    std::vector<std::uint8_t> answer(22, 0x11);
    if (n > 2)
        answer[irmcore::frame::echoOffset] = bytes[2];
    return {{answer, irmsim::Time(0)}};
}

Fixture& Fixture::get() {
    static auto* only = new Fixture; // to the program's end
    return *only;
}

Fixture::Fixture() : host(newHost(camera, line)), m_start(host.state()) {}

void Fixture::reset() {
    using irmsim::Fault;
    camera.failTransfer(0, Fault::refused(0)).failSeek(0, 0).plugIn();
    camera.failPortTransfer(0, Fault::refused(0)).failPortSetup(0, 0).plugInPort();
    static const std::array<std::uint8_t, 0x4000> blank{}; // all that the board keeps
    camera.board().write(0, blank.data(), blank.size());
    camera.board().restartFrame();
    {
        // The link's worker may still be sending what the last execution left to it.
        const std::lock_guard<Mutex> settled(host.link->m_mutex);
        const std::lock_guard<std::mutex> hold(irmsim::cameraLock());
        line.replies.clear();
        line.anyBytes = false;
        std::fill_n(host.link->m_recvBuf, irmcore::frame::bufferBytes, std::uint8_t{0});
    }
    std::uint8_t byte = 0;
    host.readData(0, &byte, 1); // a seek that fails leaves the position, here the same one
    host.take(m_start);
}

void Fixture::waitForWorker(unsigned long mark, unsigned long writes) {
    waitUntil([&] { return portWrites() - mark >= writes; });
    host.link->m_mutex.lock(); // the worker holds it until it is done
    host.link->m_mutex.unlock();
}

void Fixture::waitForFrame(std::uint8_t code) {
    waitUntil([&] {
        host.link->m_mutex.lock();
        const bool built = host.link->m_sendBuf[2] == code;
        host.link->m_mutex.unlock();
        return built;
    });
}

void Fixture::emptyPort() {
    const std::lock_guard<std::mutex> hold(irmsim::cameraLock());
    camera.sleepCall(line.latest);
    if (camera.flushCall(TCIFLUSH) == 0)
        line.latest = irmsim::Time(0);
}

void requireParameters(Host& host, Digest& out) {
    const TempSetup used = host.getSystemTempSetup();
    require(used.emiss >= 0.001F && used.emiss <= 1.001F && used.dist >= 0 &&
                used.dist <= 100000.0F && std::fabs(used.offset) <= 100.001F,
            "the parameters in use are within their ranges");
    const float trans = host.m_sysTempHandler->getTrans();
    const float dewPoint = host.m_sysTempHandler->getDewpoint();
    require(trans >= 0.0F && trans <= 1.0F, "the air lets nothing to all through");
    require(std::isfinite(dewPoint), "the dew point is finite");
    out.add(trans);
    out.add(dewPoint);
}

void writeFile(const char* path, const void* bytes, std::size_t n) {
    static time_t stamp = 1000000000;
    const int fd = open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    require(fd >= 0 && write(fd, bytes, n) == static_cast<ssize_t>(n), "a file can be written");
    const timespec times[2] = {{++stamp, 0}, {stamp, 0}};
    futimens(fd, times);
    close(fd);
}

} // namespace irmfuzz
