#pragma once

#include "support/host.h"

#include <chrono>
#include <filesystem>
#include <iterator>
#include <memory>
#include <string>
#include <thread>

/// What the tests need of the link to the detector core.
namespace irmtest {

constexpr char portPath[] = "/dev/ttyS1";

/// Waits until something holds; false after 20 s.
template <typename Condition>
bool wait(Condition condition) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!condition())
        if (std::chrono::steady_clock::now() > end)
            return false;
        else
            std::this_thread::yield();
    return true;
}

/// Waits until the core has received this many frames.
inline bool received(const irmsim::Camera& camera, unsigned long frames) {
    return wait([&] { return camera.coreCounts().allGood() >= frames; });
}

/// The frames that the core received: the code and the payload of each.
inline std::string frames(const irmsim::Camera& camera) {
    std::string all;
    for (const irmsim::CoreFrame& frame : camera.received()) {
        all += (all.empty() ? "" : " ") + hex(frame.code) + (frame.payload.empty() ? "" : ":");
        for (const std::uint8_t byte : frame.payload)
            all += hex(byte);
        all += frame.good ? "" : "!";
    }
    return all;
}

/// What something writes to standard error, without the lock's remark, which can appear falsely.
template <typename Run>
std::string linkErrors(Run run) {
    std::istringstream all(printed(run, STDERR_FILENO));
    std::string rest;
    for (std::string line; std::getline(all, line);)
        if (line.find("deadlock detected") == std::string::npos)
            rest += line + '\n';
    return rest;
}

/// Entries of a directory: of /proc/self/fd, /proc/self/task.
inline long entriesOf(const char* directory) {
    using Iterator = std::filesystem::directory_iterator;
    return std::distance(Iterator(directory), Iterator());
}

/// A link with its state in view.
struct Link : Serial {
    explicit Link(FPGA* fpga = nullptr, const char* path = portPath) : Serial(fpga, path) {}
    using Serial::m_fd, Serial::m_mutex, Serial::m_recvBuf, Serial::m_sendBuf;

    /// What was last sent, or received; waits for an exchange in progress.
    std::string sent() { return bytes(m_sendBuf, g_writeData_length); }
    std::string answer(int length) { return bytes(m_recvBuf, length); }

private:
    std::string bytes(const unsigned char* buffer, const int& length) {
        std::string all;
        m_mutex.lock();
        for (int i = 0; i < length; ++i)
            all += hex(buffer[i]);
        m_mutex.unlock();
        return all;
    }
};

} // namespace irmtest
