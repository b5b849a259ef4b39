#include "points.h"

#include <QList>

#include <algorithm>
#include <cmath>

namespace irmcore::app::calibration {

namespace {

constexpr double lowest = -100.0; // °C that a source may have
constexpr double highest = 1500.0;
constexpr int mostPoints = 10000;

/// A line's cells. Where there are semicolons or tabs a comma parts nothing, so that a decimal
/// comma is seen.
QList<QByteArray> cellsOf(const QByteArray& line) {
    QList<QByteArray> cells = line.split(line.contains(';')    ? ';'
                                         : line.contains('\t') ? '\t'
                                                               : ',');
    for (QByteArray& cell : cells)
        cell = cell.trimmed();
    return cells;
}

std::optional<double> numberOf(const QByteArray& cell) {
    bool ok = false;
    const double value = cell.toDouble(&ok);
    return ok && std::isfinite(value) ? std::optional(value) : std::nullopt;
}

/// A cell as it may be shown.
QString shown(const QByteArray& cell) {
    QString text = QString::fromUtf8(cell.left(20));
    for (QChar& c : text)
        if (!c.isPrint())
            c = QLatin1Char('?');
    return text;
}

/// Which columns hold temperature and count.
struct Columns {
    int temperature = 0;
    int ad = 1;
};

/// The columns that a header names; nothing when the line is none.
std::optional<Columns> headerOf(const QList<QByteArray>& cells) {
    const auto find = [&](std::initializer_list<const char*> names) {
        for (int i = 0; i < static_cast<int>(cells.size()); ++i)
            for (const char* name : names)
                if (cells[i].toLower() == name)
                    return i;
        return -1;
    };
    const Columns columns{find({"temperature", "temp", "celsius", "t"}),
                          find({"ad", "raw", "count", "counts"})};
    return columns.temperature >= 0 && columns.ad >= 0 ? std::optional(columns) : std::nullopt;
}

QString wrongWith(const QList<QByteArray>& cells, const Columns& columns, CalibrationPoint& to) {
    if (static_cast<int>(cells.size()) <= std::max(columns.temperature, columns.ad))
        return QStringLiteral("a temperature and a count are expected");
    const auto temperature = numberOf(cells[columns.temperature]);
    const auto ad = numberOf(cells[columns.ad]);
    if (!temperature || *temperature < lowest || *temperature > highest)
        return QStringLiteral("'%1' is no temperature from %2 to %3 °C")
            .arg(shown(cells[columns.temperature]))
            .arg(lowest)
            .arg(highest);
    if (!ad || *ad < 0.0 || *ad > 65535.0)
        return QStringLiteral("'%1' is no count from 0 to 65535").arg(shown(cells[columns.ad]));
    if (*ad == 0.0 || *ad == 65535.0)
        return QStringLiteral("a count of %1 is the converter's end, no measurement").arg(*ad);
    to = {*temperature, *ad};
    return {};
}

} // namespace

std::optional<std::vector<CalibrationPoint>> readPoints(const QByteArray& bytes, QString& error) {
    std::vector<CalibrationPoint> points;
    Columns columns;
    bool first = true;
    int number = 0;
    const QByteArray text = bytes.startsWith("\xEF\xBB\xBF") ? bytes.mid(3) : bytes;
    for (const QByteArray& whole : text.split('\n')) {
        ++number;
        const QByteArray line = whole.trimmed();
        if (line.isEmpty() || line.startsWith('#'))
            continue;
        const QList<QByteArray> cells = cellsOf(line);
        const std::optional<Columns> header = first ? headerOf(cells) : std::nullopt;
        first = false;
        if (header) {
            columns = *header;
            continue;
        }
        CalibrationPoint point{};
        error = wrongWith(cells, columns, point);
        if (error.isEmpty() && static_cast<int>(points.size()) == mostPoints)
            error = QStringLiteral("there are more than %1 points").arg(mostPoints);
        if (!error.isEmpty()) {
            error = QStringLiteral("%1: %2").arg(number).arg(error);
            return std::nullopt;
        }
        points.push_back(point);
    }
    return points;
}

QByteArray writePoints(const std::vector<CalibrationPoint>& points, const QString& comment) {
    QByteArray bytes = "# " + comment.toUtf8() + "\ntemperature,ad\n";
    for (const CalibrationPoint& point : points)
        bytes += QByteArray::number(point.celsius, 'g', 12) + ',' +
                 QByteArray::number(point.ad, 'f', 4) + '\n';
    return bytes;
}

} // namespace irmcore::app::calibration
