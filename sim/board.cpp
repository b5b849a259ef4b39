#include "board.h"

#include "device/registers.h"
#include "window.h"

#include <algorithm>
#include <cstring>

namespace irmsim {

namespace reg = irmcore::reg;

namespace {

constexpr int partedWidth = 384;
constexpr int partedHeight = 288;
constexpr int wholeWidth = 160;
constexpr int wholeHeight = 120;
constexpr std::size_t partedBytes = reg::framePart384 * reg::frameParts384;
static_assert(partedBytes == std::size_t{2} * partedWidth * partedHeight);
static_assert(reg::frame.length == std::size_t{2} * wholeWidth * wholeHeight);

constexpr unsigned allBounds = 0xF;
constexpr std::uint8_t fpgaOwnsWindow = 0xFF;

} // namespace

Board::Board(const Scene& scene, const Detector& detector, Clock& clock)
    : m_scene(scene), m_detector(detector), m_clock(clock), m_bins(0x10000), m_stream(partedBytes) {
    setVersion("irmsim FPGA 1.0");
    m_kept[reg::windowControl.address] = fpgaOwnsWindow;
    m_counts.reserve(partedBytes / 2);
    m_frame.ad.reserve(partedBytes / 2);
}

long Board::read(std::uint32_t address, void* buf, std::size_t len) {
    if (len == 0)
        return 0;
    auto* out = static_cast<std::uint8_t*>(buf);
    Window window(address, out, len);
    if (address == reg::frame.address) {
        readFrame(out, len);
    } else {
        std::memset(out, 0, len);
        window.put(0, m_kept.data(), m_kept.size());
        answerStatistics(window);
        answerPoints(window);
        answerAreas(window);
        answerSensors(window);
    }
    for (const Poke& poke : m_pokes)
        window.put(poke.address, poke.bytes.data(), poke.bytes.size());
    return static_cast<long>(len);
}

long Board::write(std::uint32_t address, const void* buf, std::size_t len) {
    if (len > 0 && address < m_kept.size()) {
        std::memcpy(m_kept.data() + address, buf, std::min(len, m_kept.size() - address));
        takeOwnership(address, len);
        const bool freeze = (m_kept[reg::freezeControl.address] & reg::frozen.mask()) != 0;
        if (freeze && !m_frozen)
            frame(); // what is kept is the frame of this moment
        m_frozen = freeze;
    }
    return static_cast<long>(len);
}

void Board::readFrame(std::uint8_t* out, std::size_t len) {
    if (len == reg::framePart384) {
        if (m_part == 0)
            refreshStream(partedWidth, partedHeight);
        std::memcpy(out, m_stream.data() + m_part * len, len);
        m_part = (m_part + 1) % reg::frameParts384;
        if (m_part == 0)
            nextFrame();
        return;
    }
    restartFrame();
    refreshStream(wholeWidth, wholeHeight);
    const std::size_t whole = reg::frame.length;
    std::memcpy(out, m_stream.data(), std::min(len, whole));
    if (len > whole)
        std::memset(out + whole, 0, len - whole);
    if (len == whole)
        nextFrame();
}

void Board::refreshStream(int width, int height) {
    const Frame& now = frame();
    if (m_streamOf == m_frameStamp && m_streamWidth == width)
        return;
    deliver(now, width, height, m_stream.data());
    m_streamOf = m_frameStamp;
    m_streamWidth = width;
}

void Board::setLensCode(unsigned code) { m_lensCode = code & reg::lensCodeMask; }

void Board::setLensVariant(bool on) {
    std::uint8_t& byte = m_kept[reg::imageControl.address];
    const unsigned mask = reg::lensVariant.mask();
    byte = static_cast<std::uint8_t>(on ? byte | mask : byte & ~mask);
}

void Board::setVersion(const std::string& text) {
    m_version.fill(' ');
    std::copy_n(text.begin(), std::min(text.size(), m_version.size()), m_version.begin());
}

void Board::poke(std::uint32_t address, std::vector<std::uint8_t> bytes) {
    m_pokes.push_back({address, std::move(bytes)});
}

void Board::unpoke(std::uint32_t address) {
    m_pokes.erase(std::remove_if(m_pokes.begin(), m_pokes.end(),
                                 [=](const Poke& poke) { return poke.address == address; }),
                  m_pokes.end());
}

void Board::nextFrame() {
    m_clock.passFrame();
    if (!m_frozen)
        ++m_frameNumber;
}

std::uint8_t Board::kept(std::uint32_t address) const {
    return address < m_kept.size() ? m_kept[address] : std::uint8_t{0};
}

void Board::show(const Frame& frame) {
    m_frame = frame;
    m_given = true;
    ++m_frameStamp;
}

const Frame& Board::frame() {
    if (m_given || (m_frozen && m_frameStamp != 0))
        return m_frame;
    bool changed = false;
    if (m_countsScene != m_scene.stamp() || m_countsDetector != m_detector.stamp()) {
        m_frame.width = m_scene.width();
        m_frame.height = m_scene.height();
        m_counts.clear();
        double last = 0;
        double lastCounts = m_detector.counts(last);
        for (int y = 0; y < m_frame.height; ++y) {
            for (int x = 0; x < m_frame.width; ++x) {
                const double celsius = m_scene.at(x, y);
                if (!(celsius == last)) {
                    last = celsius;
                    lastCounts = m_detector.counts(celsius);
                }
                m_counts.push_back(lastCounts);
            }
        }
        m_frame.ad.resize(m_counts.size());
        m_countsScene = m_scene.stamp();
        m_countsDetector = m_detector.stamp();
        changed = true;
    }
    if (changed || (m_detector.noise() > 0 && m_frameOf != m_frameNumber)) {
        m_detector.rawFrame(m_counts, m_frameNumber, m_frame.ad);
        m_frameOf = m_frameNumber;
        ++m_frameStamp;
    }
    return m_frame;
}

void Board::takeOwnership(std::uint32_t address, std::size_t len) {
    for (unsigned i = 0; i < m_points.size(); ++i) {
        if (len == 4 && address == reg::pointPosition.at(i).address) {
            endAreasIn(address, len);
            m_points[i] = true;
            return;
        }
    }
    for (unsigned i = 0; i < m_areas.size(); ++i) {
        const std::uint32_t block = reg::areaBounds.at(i).address;
        if (len != 2 || address < block || address > block + 6 || (address - block) % 2 != 0)
            continue;
        Area& area = m_areas[i];
        area.boundsSeen |= 1U << ((address - block) / 2);
        area.measured = 0;
        if (area.boundsSeen == allBounds && !area.alive) {
            endPointsIn(block, reg::areaBounds.stride);
            area.alive = true;
        }
        return;
    }
    endPointsIn(address, len);
    endAreasIn(address, len);
}

void Board::endPointsIn(std::uint32_t address, std::size_t len) {
    for (unsigned i = 0; i < m_points.size(); ++i)
        if (meet(reg::pointPosition.at(i).address, reg::pointPosition.stride, address, len))
            m_points[i] = false;
}

void Board::endAreasIn(std::uint32_t address, std::size_t len) {
    for (unsigned i = 0; i < m_areas.size(); ++i)
        if (meet(reg::areaBounds.at(i).address, reg::areaBounds.stride, address, len))
            m_areas[i] = Area{};
}

} // namespace irmsim
