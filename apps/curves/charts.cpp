#include "charts.h"

#include "../annotate.h"
#include "../offscreen.h"

#include <QApplication>
#include <QBuffer>
#include <QChart>
#include <QFile>
#include <QGraphicsLayout>
#include <QGraphicsScene>
#include <QLegend>
#include <QLineSeries>
#include <QPainter>
#include <QSvgGenerator>
#include <QValueAxis>

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>

// Qt 5 keeps them in a namespace, Qt 6 does not.
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
QT_CHARTS_USE_NAMESPACE
#endif

namespace irmcore::app {

namespace {

constexpr QSize size(960, 600); // pixels of 1/96 inch
constexpr int titleHeight = 20;
constexpr int fontHeight = 15;
constexpr int lineWidth = 2;

/// Colours that those who see few colours tell apart, too.
constexpr std::array<QRgb, 7> colours{0xFF0072B2, 0xFFD55E00, 0xFF009E73, 0xFFCC79A7,
                                      0xFF000000, 0xFF56B4E9, 0xFFE69F00};

/// An axis of `title` over round numbers; the chart's.
QValueAxis* addAxis(QChart& chart, const QString& title, Qt::Alignment side) {
    auto* axis = new QValueAxis;
    axis->setTitleText(title);
    axis->setTitleFont(pictureFont(fontHeight));
    axis->setLabelsFont(pictureFont(fontHeight));
    chart.addAxis(axis, side);
    return axis;
}

/// Lays the axis over finite `values`, to round numbers.
void span(QValueAxis& axis, const std::vector<double>& values) {
    constexpr int ticks = 9;
    constexpr int mostDecimals = 6;
    if (values.empty())
        return;
    const auto [least, most] = std::minmax_element(values.begin(), values.end());
    // What is level still needs a scale.
    const double room = *most - *least < 1e-6 ? 0.1 : 0.0;
    axis.setRange(*least - room, *most + room);
    axis.setTickCount(ticks);
    axis.applyNiceNumbers();
    double step = (axis.max() - axis.min()) / (axis.tickCount() - 1);
    int decimals = 0;
    while (decimals < mostDecimals && std::abs(step - std::round(step)) > 1e-6) {
        step *= 10.0;
        ++decimals;
    }
    axis.setLabelFormat(QStringLiteral("%.%1f").arg(decimals));
}

/// All finite values that one of the two axes has to show.
std::vector<double> valuesOf(const Diagram& diagram, bool right) {
    std::vector<double> all;
    for (const Curve& curve : diagram.curves)
        if (curve.right == right)
            std::copy_if(curve.values.begin(), curve.values.end(), std::back_inserter(all),
                         [](double value) { return std::isfinite(value); });
    return all;
}

QPen penOf(const Diagram& diagram, const Curve& curve) {
    const auto index = static_cast<std::size_t>(&curve - diagram.curves.data());
    QPen pen{QColor{colours[index % colours.size()]}, lineWidth};
    if (curve.right)
        pen.setStyle(Qt::DashLine);
    return pen;
}

/// The chart of a diagram; the scene's that it is put into.
QChart* makeChart(const Diagram& diagram) {
    auto* chart = new QChart;
    chart->setTitle(diagram.title);
    chart->setTitleFont(pictureFont(titleHeight));
    chart->setAnimationOptions(QChart::NoAnimation);
    chart->legend()->setAlignment(Qt::AlignBottom);
    chart->legend()->setFont(pictureFont(fontHeight));
    chart->setBackgroundRoundness(0);
    chart->layout()->setContentsMargins(0, 0, 0, 0);
    QValueAxis* const below = addAxis(*chart, diagram.xTitle, Qt::AlignBottom);
    QValueAxis* const left = addAxis(*chart, diagram.yTitle, Qt::AlignLeft);
    QValueAxis* const right = diagram.rightTitle.isEmpty()
                                  ? nullptr
                                  : addAxis(*chart, diagram.rightTitle, Qt::AlignRight);
    for (const Curve& curve : diagram.curves) {
        auto* series = new QLineSeries;
        series->setName(curve.name);
        series->setPen(penOf(diagram, curve));
        for (std::size_t i = 0; i < diagram.x.size(); ++i)
            if (std::isfinite(curve.values[i]))
                series->append(diagram.x[i], curve.values[i]);
        chart->addSeries(series);
        series->attachAxis(below);
        series->attachAxis(curve.right && right != nullptr ? right : left);
    }
    span(*below, diagram.x);
    span(*left, valuesOf(diagram, false));
    if (right != nullptr)
        span(*right, valuesOf(diagram, true));
    return chart;
}

QByteArray svgOf(const Diagram& diagram) {
    QGraphicsScene scene;
    QChart* const chart = makeChart(diagram);
    scene.addItem(chart);
    chart->resize(size);
    scene.setSceneRect(QRectF(QPointF(), size));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QSvgGenerator generator;
    generator.setOutputDevice(&buffer);
    generator.setSize(size);
    generator.setViewBox(QRect(QPoint(), size));
    generator.setResolution(96);
    generator.setTitle(diagram.title);
    generator.setDescription(QString());
    QPainter painter(&generator);
    painter.setRenderHint(QPainter::Antialiasing);
    scene.render(&painter, QRectF(QPointF(), size), scene.sceneRect());
    painter.end();
    return bytes;
}

} // namespace

std::unique_ptr<QCoreApplication> makeChartApplication(int& argc, char** argv) {
    return makeOffscreen<QApplication>(argc, argv);
}

bool canDraw() {
    QString error;
    if (fontsAreThere(error))
        return true;
    complain(error);
    return false;
}

QString drawDiagram(const Diagram& diagram, const QString& file) {
    const QByteArray bytes = svgOf(diagram);
    QFile out(file);
    if (!out.open(QIODevice::WriteOnly) || out.write(bytes) != bytes.size() || !out.flush())
        return QStringLiteral("cannot write %1: %2").arg(file, out.errorString());
    return {};
}

} // namespace irmcore::app
