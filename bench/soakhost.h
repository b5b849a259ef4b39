#pragma once

#include "bench/soaksurvey.h"

#include <random>
#include <unistd.h>

/// A host that does all day what hosts do, on a camera that things happen to.
namespace irmsoak {

inline constexpr int framesASecond = 30;

class Host {
public:
    explicit Host(std::uint64_t seed);

    void hour(bool faulty);

    /// Brings the façade up to date, as a host that has lost sight of the camera would: everything
    /// that start-up takes from files and registers is taken from them again. It measures a little,
    /// and then both temperatures move a little, so that there is a drift. Returns what the camera
    /// is like now.
    State upToDate();
    std::string survey() { return Survey(*m_host, m_camera).take(); }
    /// The largest error of those readings of the scene's targets that are "OK", °C.
    double worstError();

    irmsim::Camera& camera() { return m_camera; }
    int rounds() const { return m_driver->rounds(); }
    unsigned long queries() const { return m_queries; }
    unsigned long frames() const { return m_frames; }
    unsigned long changes() const { return m_changes; }

private:
    unsigned pick(unsigned n) { return static_cast<unsigned>(m_random() % n); }
    float between(float low, float high) {
        return low + (high - low) * static_cast<float>(pick(1001)) / 1000.0F;
    }
    static void wait() { ::usleep(500000); }
    std::uint16_t intTime() const { return irmsim::rangeIntTimes[m_range == 0 ? 0 : 1]; }

    void tick(bool faulty);
    /// A day's course inside the camera, and a shorter one; steps are those of the registers.
    void moveTemperatures();
    /// One query of a kind that comes round.
    void measure();
    void wholeFrame(ParaMode_t mode);
    void limits();
    void freeze(bool on);

    // bench/soakchanges.cpp
    void writeSettings();
    void change();
    void changeRange();
    void changeLens();
    void changeSettings();
    void changePicture();
    void changeParameters();
    void changeScene();
    void restartCore();
    void talk();
    /// Something goes wrong, for up to half a minute.
    void fault();
    void liftFaults();

    irmsim::Camera m_camera;
    std::optional<FPGA> m_host;
    std::optional<irmcore::app::Driver> m_driver;
    std::mt19937_64 m_random;
    irmsim::Surroundings m_believed;
    int m_range = 0;
    int m_lens = 0;
    bool m_frozen = false;
    std::uint64_t m_tick = 0;
    std::uint64_t m_faultEnds = 0; // 0: nothing is wrong
    unsigned long m_queries = 0;
    unsigned long m_frames = 0;
    unsigned long m_changes = 0;
    std::vector<unsigned short> m_ad = std::vector<unsigned short>(19200);
    std::vector<float> m_celsius = std::vector<float>(19200);
    std::vector<unsigned char> m_status = std::vector<unsigned char>(19200);
};

} // namespace irmsoak
