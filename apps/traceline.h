#pragma once

#include "courierreader.h"
#include "decode.h"

#include <QStringList>

#include <cstdio>
#include <optional>

namespace irmcore::app {

/// What a trace shows, and how.
struct TraceStyle {
    bool json = false;
    bool device = true;
    bool port = true;
    QStringList registers; ///< with or without a slot's number; empty for all
};

/// Whether a register has this name: "level", "pointAd", "pointAd[3]".
bool isRegisterName(const QString& name);

/// Writes a line for every transfer that it hears of. A position that is sought is told with the
/// transfer there, and reads of the port that bring nothing are told together.
class Tracer {
public:
    /// `to` stays the caller's.
    Tracer(const TraceStyle& style, std::FILE* to);

    void hear(const Heard& heard);
    /// Writes what has been put off.
    void finish();
    /// 0, or the error number with which a line could not be written; none is after it.
    int error() const { return m_error; }

private:
    struct Line;
    void hearDevice(const Heard& heard, Line& line);
    void hearPort(const Heard& heard, Line& line);
    void tellEmptyReads();
    bool isShown(const Line& line) const;
    void print(const Line& line);

    TraceStyle m_style;
    std::FILE* m_to;
    int m_error = 0;
    RegisterDecoder m_registers;
    PortDecoder m_port;
    std::optional<std::int64_t> m_begin; // of time, ns
    std::int64_t m_portTime = 0;         // of the last call on the port that was not an empty read
    unsigned long m_emptyReads = 0;
    irmsim::WireHeader m_lastEmpty{};
};

} // namespace irmcore::app
