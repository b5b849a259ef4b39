#pragma once

#include "tools.h"

#include "../snapshot.h"

#include <QAbstractTableModel>

#include <memory>

namespace irmcore::view {

/// The readings of the whole frame and, below it, of each tool.
class ReadingsModel : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column { nameColumn, highestColumn, lowestColumn, meanColumn, statusColumn, columns };

    /// The tools outlive the model.
    explicit ReadingsModel(const Tools& tools, QObject* parent = nullptr);

    void show(std::shared_ptr<const Snapshot> snapshot);
    /// 0 for the frame's row.
    int idOf(int row) const;
    /// -1 without such a tool.
    int rowOf(int id) const;
    /// All rows with their header: a line each, tabs between.
    QString text() const;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    void takeTools();
    const ToolReading* reading(const PlacedTool& placed) const;
    QString frameText(int column) const;
    QString toolText(const PlacedTool& placed, int column) const;

    const Tools& m_all;
    std::vector<PlacedTool> m_tools;
    std::shared_ptr<const Snapshot> m_snapshot;
};

} // namespace irmcore::view
