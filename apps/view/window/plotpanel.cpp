#include "plotpanel.h"

#include "wording.h"

#include <QGraphicsLayout>
#include <QHBoxLayout>
#include <QLegend>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace irmcore::view {

namespace {

/// Colours that those who see few colours tell apart, too.
constexpr std::array<QRgb, 7> colours{0xFF0072B2, 0xFFD55E00, 0xFF009E73, 0xFFCC79A7,
                                      0xFF8C6D31, 0xFF56B4E9, 0xFFE69F00};
constexpr std::array<double, 4> lengths{30.0, 60.0, 120.0, 300.0}; // s of the time axis
constexpr double leastSpan = 1.0;                                  // °C of the other

/// Round limits and a few ticks around what there is to show.
void span(QValueAxis& axis, double least, double most) {
    const double room = std::max(0.1 * (most - least), (leastSpan - (most - least)) / 2.0);
    const double low = least - std::max(room, 0.0);
    const double high = most + std::max(room, 0.0);
    // The axis leaves labels out that are too close to each other.
    constexpr double mostSteps = 4.0;
    const double power = std::pow(10.0, std::floor(std::log10((high - low) / mostSteps)));
    double step = 10.0 * power;
    for (const double factor : {5.0, 2.0, 1.0})
        if ((high - low) / (factor * power) <= mostSteps)
            step = factor * power;
    const double bottom = std::floor(low / step) * step;
    const double top = std::ceil(high / step) * step;
    axis.setRange(bottom, top);
    axis.setTickCount(static_cast<int>(std::lround((top - bottom) / step)) + 1);
    axis.setLabelFormat(step < 1.0 ? QStringLiteral("%.1f") : QStringLiteral("%.0f"));
}

} // namespace

PlotPanel::PlotPanel(const Tools& tools, QWidget* parent)
    : QWidget(parent), m_tools(tools), m_chart(new QChart), m_view(new QChartView(m_chart)),
      m_time(new QValueAxis(this)), m_temperature(new QValueAxis(this)),
      m_save(new QPushButton(QStringLiteral("E&xport CSV…"))) {
    m_view->setObjectName(QStringLiteral("plot"));
    m_view->setAccessibleName(QStringLiteral("Highest temperatures over time"));
    m_view->setRenderHint(QPainter::Antialiasing);
    m_view->setFrameShape(QFrame::NoFrame);
    m_view->setMinimumHeight(110);
    const QPalette colors = palette();
    m_chart->setAnimationOptions(QChart::NoAnimation);
    m_chart->setBackgroundRoundness(0);
    m_chart->setBackgroundVisible(false);
    m_view->setBackgroundBrush(colors.window());
    m_chart->layout()->setContentsMargins(0, 0, 0, 0);
    m_chart->setMargins(QMargins(4, 4, 8, 4));
    m_chart->legend()->setAlignment(Qt::AlignRight);
    m_chart->legend()->setMarkerShape(QLegend::MarkerShapeCircle);
    m_chart->legend()->setLabelColor(colors.color(QPalette::Text));
    m_chart->addAxis(m_time, Qt::AlignBottom);
    m_chart->addAxis(m_temperature, Qt::AlignLeft);
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.9);
    QColor grid = colors.color(QPalette::Text);
    grid.setAlphaF(0.15F);
    for (QValueAxis* axis : {m_time, m_temperature}) {
        axis->setLabelsFont(small);
        axis->setLabelsColor(colors.color(QPalette::Text));
        axis->setGridLineColor(grid);
    }
    m_time->setRange(-lengths.front(), 0.0);
    m_time->setTickCount(7);
    m_time->setLabelFormat(QStringLiteral("%.0f s"));
    m_temperature->setRange(20.0, 40.0);
    m_temperature->setLabelFormat(QStringLiteral("%.0f"));
    auto* const clearButton = new QPushButton(QStringLiteral("C&lear"));
    clearButton->setObjectName(QStringLiteral("clearPlot"));
    m_save->setObjectName(QStringLiteral("savePlot"));
    auto* const buttons = new QVBoxLayout;
    buttons->setContentsMargins(0, 6, 6, 6);
    buttons->addWidget(clearButton);
    buttons->addWidget(m_save);
    buttons->addStretch();
    auto* const layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_view, 1);
    layout->addLayout(buttons);
    connect(clearButton, &QPushButton::clicked, this, &PlotPanel::clear);
    connect(m_save, &QPushButton::clicked, this, &PlotPanel::saveWanted);
    connect(&tools, &Tools::changed, this, &PlotPanel::takeTools);
    takeTools();
}

void PlotPanel::takeTools() {
    for (auto it = m_series.begin(); it != m_series.end();) {
        if (m_tools.find(it->first) != nullptr) {
            ++it;
            continue;
        }
        m_chart->removeSeries(it->second);
        delete it->second;
        it = m_series.erase(it);
    }
    for (const PlacedTool& placed : m_tools.all()) {
        if (m_series.count(placed.tool.id) != 0)
            continue;
        auto* const series = new QLineSeries;
        series->setName(toolName(placed.tool.kind, placed.number));
        const auto index = static_cast<std::size_t>(placed.tool.id) % colours.size();
        series->setPen(QPen(QColor(colours[index]), 2.0));
        m_chart->addSeries(series);
        series->attachAxis(m_time);
        series->attachAxis(m_temperature);
        m_series.emplace(placed.tool.id, series);
    }
    m_chart->legend()->setVisible(!m_series.empty());
    draw();
}

void PlotPanel::show(const Snapshot& snapshot) {
    if (m_history.add(snapshot) && isVisible())
        draw();
}

void PlotPanel::clear() {
    m_history.clear();
    draw();
}

void PlotPanel::draw() {
    double least = std::numeric_limits<double>::infinity();
    double most = -least;
    for (const auto& [id, series] : m_series) {
        const QVector<QPointF> points = m_history.curve(id);
        for (const QPointF& point : points) {
            least = std::min(least, point.y());
            most = std::max(most, point.y());
        }
        series->replace(points);
    }
    m_save->setEnabled(!m_history.empty() && !m_series.empty());
    const auto length = std::find_if(lengths.begin(), lengths.end(), [this](double seconds) {
        return seconds >= m_history.length();
    });
    m_time->setRange(length == lengths.end() ? -lengths.back() : -*length, 0.0);
    if (least <= most)
        span(*m_temperature, least, most);
}

} // namespace irmcore::view
