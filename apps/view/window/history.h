#pragma once

#include "tools.h"

#include "../snapshot.h"

#include <QByteArray>
#include <QPointF>
#include <QVector>

#include <deque>
#include <utility>
#include <vector>

namespace irmcore::view {

/// The tools' highest temperatures over the last minutes.
class History {
public:
    static constexpr double longest = 300.0; ///< s
    static constexpr double interval = 0.25; ///< s between two points

    /// Takes what is to be relied on, unless the last was taken a moment ago. True when it did.
    bool add(const Snapshot& snapshot);
    void clear() { m_rows.clear(); }
    bool empty() const { return m_rows.empty(); }

    /// Seconds between the first point and the last.
    double length() const;
    /// A tool's points; x are seconds before the last one of all, 0 or below.
    QVector<QPointF> curve(int id) const;
    /// A line of names, then one for each time: seconds since the first, and a field for each
    /// tool, empty where it had no reading.
    QByteArray csv(const std::vector<PlacedTool>& tools) const;

private:
    struct Row {
        double seconds;
        std::vector<std::pair<int, double>> values; // id and °C
    };
    std::deque<Row> m_rows;
};

} // namespace irmcore::view
