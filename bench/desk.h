#pragma once

#include <string>
#include <thread>

namespace irmbench {

/// What stands in for the camera's two devices: behind the FPGA's path a file in memory, whose
/// system calls are real ones and cost what they cost, and behind the port's a pty with a core that
/// answers every frame with two bytes. One at a time.
class Desk {
public:
    Desk();
    ~Desk(); ///< after the façade's end; waits for the thread
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;

    /// Whether both are there.
    bool ready() const { return m_file >= 0 && m_port >= 0; }
    /// A descriptor of the port's, beside the library's own.
    int port() const { return m_port; }

private:
    void fillRegisters() const;
    void answer() const;

    int m_file;
    int m_master = -1;
    int m_port = -1;
    std::thread m_core;
};

} // namespace irmbench
