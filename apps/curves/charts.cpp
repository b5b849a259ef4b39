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

// Qt 5 keeps them in a namespace, Qt 6 does not.
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
QT_CHARTS_USE_NAMESPACE
#endif

namespace irmcore::app {

namespace {

constexpr QSize size(960, 600); // pixels of 1/96 inch
constexpr int titleHeight = 20;
constexpr int fontHeight = 15;

/// An axis of `title` over round numbers; the chart's.
QValueAxis* addAxis(QChart& chart, const QString& title, Qt::Alignment side) {
    auto* axis = new QValueAxis;
    axis->setTitleText(title);
    axis->setTitleFont(pictureFont(fontHeight));
    axis->setLabelsFont(pictureFont(fontHeight));
    chart.addAxis(axis, side);
    return axis;
}

/// Ends the axis at round numbers. Qt takes its own digits for labels; these are enough of them.
void round(QValueAxis& axis) {
    // A curve that is level still needs a scale.
    if (axis.max() - axis.min() < 1e-6)
        axis.setRange(axis.min() - 0.1, axis.max() + 0.1);
    axis.applyNiceNumbers();
    const double step = (axis.max() - axis.min()) / (axis.tickCount() - 1);
    int decimals = 0;
    for (double part = step; decimals < 6 && part < 1.0 - 1e-9; part *= 10.0)
        ++decimals;
    axis.setLabelFormat(QStringLiteral("%.%1f").arg(decimals));
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
        for (std::size_t i = 0; i < diagram.x.size(); ++i)
            series->append(diagram.x[i], curve.values[i]);
        chart->addSeries(series);
        series->attachAxis(below);
        series->attachAxis(curve.right && right != nullptr ? right : left);
    }
    round(*below);
    round(*left);
    if (right != nullptr)
        round(*right);
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
