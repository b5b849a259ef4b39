#pragma once

#include "readingsmodel.h"

#include <QWidget>

class QLabel;
class QTableView;

namespace irmcore::view {

/// The table of readings; its selection is that of the tools.
class ReadingsPanel : public QWidget {
    Q_OBJECT
public:
    explicit ReadingsPanel(Tools& tools, QWidget* parent = nullptr);

    void show(const std::shared_ptr<const Snapshot>& snapshot);
    /// Puts the table on the clipboard as text.
    void copy() const;

private:
    void selectRow();

    Tools& m_tools;
    ReadingsModel* m_model;
    QTableView* m_table;
    QLabel* m_hint;
};

} // namespace irmcore::view
