#include "readingsmodel.h"

#include "wording.h"

#include <QGuiApplication>
#include <QPalette>
#include <QStringList>

#include <algorithm>
#include <utility>

namespace irmcore::view {

namespace {

const QString none(QChar(0x2013));

} // namespace

ReadingsModel::ReadingsModel(const Tools& tools, QObject* parent)
    : QAbstractTableModel(parent), m_all(tools), m_tools(tools.all()) {
    connect(&tools, &Tools::changed, this, &ReadingsModel::takeTools);
}

/// Rows come and go only when tools do; else a selection would be lost.
void ReadingsModel::takeTools() {
    const std::vector<PlacedTool>& now = m_all.all();
    const bool same =
        std::equal(now.begin(), now.end(), m_tools.begin(), m_tools.end(),
                   [](const PlacedTool& a, const PlacedTool& b) { return a.tool.id == b.tool.id; });
    if (same) {
        m_tools = now;
        return;
    }
    beginResetModel();
    m_tools = now;
    endResetModel();
}

void ReadingsModel::show(std::shared_ptr<const Snapshot> snapshot) {
    m_snapshot = std::move(snapshot);
    Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columns - 1));
}

int ReadingsModel::idOf(int row) const {
    return row < 1 || row > static_cast<int>(m_tools.size())
               ? 0
               : m_tools[static_cast<std::size_t>(row - 1)].tool.id;
}

int ReadingsModel::rowOf(int id) const {
    for (int row = 1; row < rowCount(); ++row)
        if (idOf(row) == id)
            return row;
    return -1;
}

int ReadingsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_tools.size()) + 1;
}

int ReadingsModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int{columns};
}

const ToolReading* ReadingsModel::reading(const PlacedTool& placed) const {
    if (!m_snapshot)
        return nullptr;
    const auto& all = m_snapshot->readings;
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const ToolReading& r) { return r.id == placed.tool.id; });
    return found == all.end() ? nullptr : &*found;
}

QString ReadingsModel::frameText(int column) const {
    if (column == nameColumn)
        return QStringLiteral("Frame");
    if (!m_snapshot || column == meanColumn)
        return none;
    const Value& hottest = m_snapshot->hottest;
    const Value& coldest = m_snapshot->coldest;
    if (column == statusColumn)
        return statusInWords(hottest.ok() ? coldest.status : hottest.status);
    return shortText(column == highestColumn ? hottest : coldest);
}

QString ReadingsModel::toolText(const PlacedTool& placed, int column) const {
    if (column == nameColumn)
        return toolName(placed.tool.kind, placed.number);
    const ToolReading* const read = reading(placed);
    if (read == nullptr)
        return none;
    if (column == statusColumn)
        return statusInWords(*read);
    // A spot is one pixel.
    if (column != highestColumn && placed.tool.kind == ToolKind::spot)
        return none;
    return shortText(column == highestColumn  ? read->hottest
                     : column == lowestColumn ? read->coldest
                                              : read->mean);
}

QVariant ReadingsModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const bool settled = m_snapshot && m_snapshot->settled && m_snapshot->present;
    switch (role) {
    case Qt::DisplayRole:
        return index.row() == 0
                   ? frameText(index.column())
                   : toolText(m_tools[static_cast<std::size_t>(index.row() - 1)], index.column());
    case Qt::TextAlignmentRole:
        return index.column() == nameColumn || index.column() == statusColumn
                   ? int{Qt::AlignLeft | Qt::AlignVCenter}
                   : int{Qt::AlignRight | Qt::AlignVCenter};
    case Qt::ForegroundRole:
        if (!settled)
            return QGuiApplication::palette().brush(QPalette::Disabled, QPalette::Text);
        return {};
    case Qt::ToolTipRole:
        if (!settled)
            return QStringLiteral("Not to be relied on until the camera has calibrated");
        return data(index, Qt::DisplayRole);
    default:
        return {};
    }
}

QVariant ReadingsModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QAbstractTableModel::headerData(section, orientation, role);
    static const QStringList titles{QStringLiteral("Tool"), QStringLiteral("Highest"),
                                    QStringLiteral("Lowest"), QStringLiteral("Mean"),
                                    QStringLiteral("Status")};
    return titles.value(section);
}

QString ReadingsModel::text() const {
    QString result;
    for (int row = -1; row < rowCount(); ++row) {
        QStringList cells;
        for (int column = 0; column < columns; ++column)
            cells += row < 0 ? headerData(column, Qt::Horizontal, Qt::DisplayRole).toString()
                             : data(index(row, column), Qt::DisplayRole).toString();
        result += cells.join(QLatin1Char('\t')) + QLatin1Char('\n');
    }
    return result;
}

} // namespace irmcore::view
