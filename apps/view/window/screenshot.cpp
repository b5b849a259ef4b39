#include "screenshot.h"

#include "../../commands.h"
#include "wording.h"

#include <QCoreApplication>
#include <QPixmap>

#include <algorithm>
#include <utility>

namespace irmcore::view {

namespace {

constexpr int interval = 100;     // ms
constexpr int mostLooks = 600;    // a minute
constexpr double leastPlot = 8.0; // s

/// Two spots, a line and an area; places are shares of the frame's size in thousandths.
void placeTools(Tools& tools, int width, int height) {
    const auto at = [=](int x, int y) { return Pixel{width * x / 1000, height * y / 1000}; };
    tools.place(ToolKind::spot, {at(875, 250), at(875, 250)});
    tools.place(ToolKind::spot, {at(625, 250), at(625, 250)});
    tools.place(ToolKind::line, {at(40, 830), at(460, 690)});
    tools.place(ToolKind::area, {at(790, 640), at(960, 870)});
    tools.select(0);
    tools.history().clear();
}

} // namespace

Screenshot::Screenshot(MainWindow& window, QString file)
    : m_window(window), m_file(std::move(file)) {
    m_timer.setInterval(interval);
    connect(&m_timer, &QTimer::timeout, this, &Screenshot::look);
    m_timer.start();
}

void Screenshot::look() {
    const auto& snapshot = m_window.snapshot();
    if (snapshot && snapshot->frame.width > 0 && m_window.tools().all().empty())
        placeTools(m_window.tools(), snapshot->frame.width, snapshot->frame.height);
    const bool read = snapshot && snapshot->settled && !snapshot->calibrating &&
                      snapshot->present &&
                      snapshot->readings.size() == m_window.tools().all().size();
    if (read && m_window.plotted() >= leastPlot)
        return write();
    if (++m_looks < mostLooks)
        return;
    const bool troubled = snapshot && !snapshot->troubles.empty();
    app::complain(troubled ? fromLocal(snapshot->troubles.front())
                           : QStringLiteral("the camera did not settle within a minute"));
    m_timer.stop();
    QCoreApplication::exit(app::exitErrors);
}

void Screenshot::write() {
    m_timer.stop();
    const bool written = m_window.grab().save(m_file, "PNG");
    if (!written)
        app::complain(QStringLiteral("cannot write %1").arg(m_file));
    QCoreApplication::exit(written ? app::exitClean : app::exitErrors);
}

} // namespace irmcore::view
