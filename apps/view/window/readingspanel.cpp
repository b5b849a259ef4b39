#include "readingspanel.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QTableView>
#include <QVBoxLayout>

namespace irmcore::view {

ReadingsPanel::ReadingsPanel(Tools& tools, QWidget* parent)
    : QWidget(parent), m_tools(tools), m_model(new ReadingsModel(tools, this)),
      m_table(new QTableView), m_hint(new QLabel) {
    m_table->setObjectName(QStringLiteral("readings"));
    m_table->setAccessibleName(QStringLiteral("Readings"));
    m_table->setModel(m_model);
    m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_table->setSelectionMode(QAbstractItemView::SingleSelection);
    m_table->setTabKeyNavigation(false);
    m_table->setShowGrid(false);
    m_table->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_table->setAlternatingRowColors(true);
    m_table->setWordWrap(false);
    m_table->verticalHeader()->hide();
    m_table->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
    QHeaderView* const header = m_table->horizontalHeader();
    header->setHighlightSections(false);
    header->setSectionResizeMode(QHeaderView::Fixed);
    header->setSectionResizeMode(ReadingsModel::statusColumn, QHeaderView::Stretch);
    const auto widen = [&](int column, const QString& widest) {
        header->resizeSection(column, fontMetrics().horizontalAdvance(widest) + 14);
    };
    widen(ReadingsModel::nameColumn, QStringLiteral("Frame"));
    for (const int column :
         {ReadingsModel::highestColumn, ReadingsModel::lowestColumn, ReadingsModel::meanColumn})
        widen(column, QStringLiteral("no reading"));
    m_hint->setObjectName(QStringLiteral("readingsHint"));
    m_hint->setText(QStringLiteral("Grey: not to be relied on until the camera has calibrated."));
    m_hint->setWordWrap(true);
    m_hint->setMargin(4);
    m_hint->hide();
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_table);
    layout->addWidget(m_hint);
    connect(m_table->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex& now) { m_tools.select(m_model->idOf(now.row())); });
    connect(&m_tools, &Tools::selectionChanged, this, &ReadingsPanel::selectRow);
    connect(m_model, &QAbstractItemModel::modelReset, this, &ReadingsPanel::selectRow);
}

void ReadingsPanel::selectRow() {
    const int row = m_model->rowOf(m_tools.selected());
    QItemSelectionModel* const selection = m_table->selectionModel();
    if (row < 0)
        selection->clear();
    else
        selection->setCurrentIndex(m_model->index(row, 0),
                                   QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void ReadingsPanel::show(const std::shared_ptr<const Snapshot>& snapshot) {
    m_model->show(snapshot);
    m_hint->setVisible(!snapshot->settled);
}

void ReadingsPanel::copy() const { QGuiApplication::clipboard()->setText(m_model->text()); }

} // namespace irmcore::view
