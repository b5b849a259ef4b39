#pragma once

#include "history.h"

#include <QChart>
#include <QChartView>
#include <QLineSeries>
#include <QValueAxis>
#include <QWidget>

#include <map>

class QPushButton;

// Qt 5 keeps them in a namespace, Qt 6 does not.
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
QT_CHARTS_USE_NAMESPACE
#endif

namespace irmcore::view {

/// The tools' highest temperatures over time.
class PlotPanel : public QWidget {
    Q_OBJECT
public:
    /// The tools outlive the panel.
    explicit PlotPanel(const Tools& tools, QWidget* parent = nullptr);

    void show(const Snapshot& snapshot);
    const History& history() const { return m_history; }
    void clear();

Q_SIGNALS:
    void saveWanted();

private:
    void takeTools();
    void draw();

    const Tools& m_tools;
    History m_history;
    QChart* m_chart;
    QChartView* m_view;
    QValueAxis* m_time;
    QValueAxis* m_temperature;
    QPushButton* m_save;
    std::map<int, QLineSeries*> m_series; ///< by tool
};

} // namespace irmcore::view
