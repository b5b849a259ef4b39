#include "history.h"

#include "wording.h"

#include <algorithm>

namespace irmcore::view {

bool History::add(const Snapshot& snapshot) {
    if (!snapshot.present || !snapshot.settled || snapshot.calibrating || snapshot.frozen)
        return false;
    const double seconds = std::chrono::duration<double>(snapshot.taken.time_since_epoch()).count();
    // Frames come a little early and a little late.
    constexpr double early = 0.01;
    if (!m_rows.empty() && seconds < m_rows.back().seconds + interval - early)
        return false;
    Row row{seconds, {}};
    for (const ToolReading& reading : snapshot.readings)
        if (reading.hottest.ok())
            row.values.emplace_back(reading.id, reading.hottest.celsius);
    m_rows.push_back(std::move(row));
    while (m_rows.front().seconds < seconds - longest)
        m_rows.pop_front();
    return true;
}

double History::length() const {
    return m_rows.empty() ? 0.0 : m_rows.back().seconds - m_rows.front().seconds;
}

QVector<QPointF> History::curve(int id) const {
    QVector<QPointF> points;
    for (const Row& row : m_rows)
        for (const auto& [tool, celsius] : row.values)
            if (tool == id)
                points.append({row.seconds - m_rows.back().seconds, celsius});
    return points;
}

QByteArray History::csv(const std::vector<PlacedTool>& tools) const {
    QByteArray bytes("seconds");
    for (const PlacedTool& placed : tools)
        bytes += ',' + toolName(placed.tool.kind, placed.number).toLatin1() + "_highest_celsius";
    bytes += '\n';
    for (const Row& row : m_rows) {
        bytes += QByteArray::number(row.seconds - m_rows.front().seconds, 'f', 2);
        for (const PlacedTool& placed : tools) {
            bytes += ',';
            for (const auto& [id, celsius] : row.values)
                if (id == placed.tool.id)
                    bytes += QByteArray::number(celsius, 'f', 2);
        }
        bytes += '\n';
    }
    return bytes;
}

} // namespace irmcore::view
