#pragma once

#include "core/fpga.h"
#include "sim/camera.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <type_traits>
#include <unistd.h>
#include <vector>

/// What the tests need of a host: a working directory, a camera, and a look at what happened.
namespace irmtest {

/// A fresh working directory for the life of the object.
class WorkDir {
public:
    WorkDir() : m_before(std::filesystem::current_path()) {
        m_path = std::filesystem::temp_directory_path() / "irmcore-test-XXXXXX";
        std::filesystem::current_path(mkdtemp(m_path.data()));
    }
    ~WorkDir() {
        std::error_code ignored;
        std::filesystem::current_path(m_before, ignored);
        std::filesystem::remove_all(m_path, ignored);
    }

private:
    std::filesystem::path m_before;
    std::string m_path;
};

/// Writes a file of the working directory, with its folder.
inline void write(const std::filesystem::path& file, const std::string& text) {
    std::filesystem::create_directories("." / file.parent_path());
    std::ofstream(file, std::ios::binary) << text;
}

/// What `run` prints to standard output or standard error.
template <typename Run>
std::string printed(Run run, int fd = STDOUT_FILENO) {
    const bool output = fd == STDOUT_FILENO;
    output ? testing::internal::CaptureStdout() : testing::internal::CaptureStderr();
    run();
    return output ? testing::internal::GetCapturedStdout() : testing::internal::GetCapturedStderr();
}

/// A text without its digits: source lines change.
inline std::string withoutDigits(std::string text) {
    const auto digit = [](char c) { return c >= '0' && c <= '9'; };
    text.erase(std::remove_if(text.begin(), text.end(), digit), text.end());
    return text;
}

/// Values as text with blanks between them, floating point in the digits that make it up.
template <typename... Values>
std::string joined(const Values&... values) {
    std::ostringstream out;
    const auto put = [&out](const auto& value) {
        out << (out.tellp() > 0 ? " " : "");
        if constexpr (std::is_floating_point_v<std::decay_t<decltype(value)>>) {
            char digits[64];
            out << std::string(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
        } else {
            out << value;
        }
    };
    (put(values), ...);
    return out.str();
}

/// Status and temperature.
inline std::string text(const IrTempStru& reading) { return joined(reading.status, reading.temp); }

inline std::string hex(unsigned value) {
    char text[16];
    std::snprintf(text, sizeof text, "%02X", value);
    return text;
}

/// The logged transfers: direction, address in hexadecimal, length, and of a write the bytes, the
/// middle of a long one left out: "R15:1 W62:2=3412".
inline std::string transfers(const irmsim::Camera& camera) {
    std::string all;
    for (const irmsim::Transfer& t : camera.log()) {
        all += (all.empty() ? "" : " ") + std::string(t.write ? "W" : "R") + hex(t.address) + ':' +
               std::to_string(t.length) + (t.write && t.length > 0 ? "=" : "");
        for (std::size_t i = 0; t.write && i < t.bytes.size(); ++i)
            if (t.bytes.size() <= 8 || i < 2 || i + 2 >= t.bytes.size())
                all += hex(t.bytes[i]);
            else if (i == 2)
                all += "..";
    }
    return all;
}

inline std::vector<std::uint8_t> word(unsigned value) {
    return {static_cast<std::uint8_t>(value & 0xFF), static_cast<std::uint8_t>(value >> 8 & 0xFF)};
}

/// A camera and its register interface.
struct Board : testing::Test {
    irmsim::Camera camera;
    bool installed = camera.install();
    FPGABottom board;
};

/// The façade with its state in view.
struct Probe : FPGA {
    using FPGA::m_coreVersionNum, FPGA::m_deltaTemp, FPGA::m_fileTempSetup, FPGA::m_irPara;
    using FPGA::m_isoHandler, FPGA::m_isoMaxStru, FPGA::m_isoMinStru;
    using FPGA::m_level, FPGA::m_modifyShutterTemp, FPGA::m_queryTempHandler, FPGA::m_span;
    using FPGA::m_sysTempHandler, FPGA::m_sysTempSetup, FPGA::m_tempInfoTab, FPGA::m_tempRange;
};

/// Two entries, -20 °C at 28672 and 400 °C at 45056; with the shutter at 30 °C its term is
/// -2135.5215.
inline constexpr char twoEntries[] = "[ParaSet]\nMaxAD=B000\nMinTemp=-20\nMaxTemp=400\nTempNum=2\n"
                                     "[Temp2AD]\n-20=7000\n400=B000\n";

/// A host of a camera with the table above for lens 0 in ranges 0 and 1, measuring bare table
/// temperatures (emissivity 1, no air). Inside it has 26.5 °C, at which range 0's table holds as it
/// is, and a modify factor that makes a shutter temperature of 30 °C of them.
struct Host : testing::Test {
    Host() {
        write("etc/calc_len0_temp0.conf", twoEntries);
        write("etc/calc_len0_temp1.conf", twoEntries);
        write("Parameter/Setting", "[GlobalPara]\nEmiss=1\nDistan=0\n");
        write("Parameter/Modify", "Averg_0=1.13207547\n");
        camera.temperatures(23, 30).install();
        start();
    }
    /// Constructs the façade; the log then begins anew.
    void start() {
        host.reset();
        printed([this] { host.emplace(); });
        camera.clearLog();
        camera.clearCalls();
    }
    /// Runs something; what it transfers, and what it prints.
    template <typename Run>
    std::string transfersOf(Run run) {
        camera.clearLog();
        output = printed(run);
        return transfers(camera);
    }

    WorkDir dir;
    irmsim::Camera camera;
    std::optional<Probe> host;
    std::string output;
};

} // namespace irmtest
