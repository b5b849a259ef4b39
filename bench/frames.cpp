// Whole frames of 384 x 288 to temperatures and statuses.
#include "bench.h"
#include "measure/literal.h"
#include "turns.h"

#include <cstring>
#include <string>
#include <vector>

namespace irmbench {

namespace {

constexpr std::size_t pixels = 384 * 288;
constexpr int count = static_cast<int>(pixels);

/// A frame, and room for its results.
struct Frame {
    /// Counts from `lowest` that rise by `slope` down the picture, with noise of so many counts.
    Frame(unsigned lowest, unsigned slope, unsigned noise)
        : ad(pixels), temp(pixels), status(pixels) {
        unsigned state = 1;
        for (std::size_t i = 0; i < pixels; ++i) {
            state = state * 1664525U + 1013904223U;
            const auto rise = static_cast<unsigned>(i * slope / pixels);
            ad[i] = static_cast<unsigned short>(lowest + rise + (state >> 8) % noise);
        }
    }
    std::vector<unsigned short> ad;
    std::vector<float> temp;
    std::vector<unsigned char> status;
};

/// What the prescribed calculation makes of frames, in buffers of its own.
struct Literal {
    explicit Literal(Host& host) : table(host.getIRPara().table()) {
        const TempSetup setup = host.getSystemTempSetup();
        model = {setup.emiss, setup.offset, 23.0F, 21.0F, host.m_sysTempHandler->getTrans(),
                 -20,         150,          false};
        term = host.getIRPara().readShutterDeltaAD();
        drift = host.m_deltaTemp;
    }
    void convert(const Frame& frame) {
        for (std::size_t i = 0; i < pixels; ++i) {
            const IrTempStru reading =
                irmcore::literal::objectTemp(model, table, term, drift, frame.ad[i]);
            temp[i] = reading.temp;
            const bool edge = reading.status[1] == 'E';
            status[i] = static_cast<unsigned char>(reading.status[0] == 'O'   ? 0
                                                   : reading.status[0] == 'L' ? (edge ? 2 : 1)
                                                                              : (edge ? 3 : 4));
        }
        benchmark::ClobberMemory();
    }
    irmcore::Model model{};
    TempInfoTab table;
    float term;
    float drift;
    std::vector<float> temp = std::vector<float>(pixels);
    std::vector<unsigned char> status = std::vector<unsigned char>(pixels);
};

void convert(Host& host, Frame& frame, float* temp, unsigned char* status) {
    host.getFrameTemp(frame.ad.data(), count, PARA_SYSTEM, {}, temp, status);
    benchmark::ClobberMemory();
}

bool agree(Host& host, Frame& frame, Literal& literal) {
    convert(host, frame, frame.temp.data(), frame.status.data());
    literal.convert(frame);
    return frame.status == literal.status &&
           std::memcmp(frame.temp.data(), literal.temp.data(), pixels * sizeof(float)) == 0;
}

void registerFrame(Host& host, const std::string& name, Frame& frame, Literal& literal) {
    const auto copyTemps = [&frame, &literal] {
        std::memcpy(literal.temp.data(), frame.temp.data(), pixels * sizeof(float));
        benchmark::ClobberMemory();
    };
    const auto copyStatuses = [&frame, &literal] {
        std::memcpy(literal.status.data(), frame.status.data(), pixels);
        benchmark::ClobberMemory();
    };
    const auto both = [&host, &frame] {
        convert(host, frame, frame.temp.data(), frame.status.data());
    };
    compare((name + "/both").c_str(), {"`memcpy` of the temperatures", 12.0}, both, copyTemps);
    compare((name + "/both-literal").c_str(), {"the prescribed calculation of each", 0.005}, both,
            [&frame, &literal] { literal.convert(frame); });
    compare((name + "/temperatures").c_str(), {"`memcpy` of the temperatures"},
            [&host, &frame] { convert(host, frame, frame.temp.data(), nullptr); }, copyTemps);
    compare((name + "/statuses").c_str(), {"`memcpy` of the statuses"},
            [&host, &frame] { convert(host, frame, nullptr, frame.status.data()); }, copyStatuses);
}

} // namespace

bool registerFrames(Host& host) {
    static Frame narrow(31000, 0, 2000);     // some 20 °C, neighbours have nothing in common
    static Frame full(27400, 23500, 100);    // a slope over the whole table
    static Frame scattered(27400, 0, 23600); // the whole table, nothing in common
    static Literal literal(host);
    registerFrame(host, "frame/narrow", narrow, literal);
    registerFrame(host, "frame/full", full, literal);
    registerFrame(host, "frame/scattered", scattered, literal);
    return agree(host, narrow, literal) && agree(host, full, literal) &&
           agree(host, scattered, literal);
}

} // namespace irmbench
