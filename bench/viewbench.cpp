// viewbench [SECONDS]: what the window costs, in a window of 1280x800 on the platform that the
// environment gives it: start, pictures a second, from frame to screen, and from a click to its
// reading while the core is silent. docs/viewer.md has the figures.
#include "apps/commands.h"
#include "apps/view/window/mainwindow.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMouseEvent>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace view = irmcore::view;

void irmcore::app::complain(const QString& text) {
    std::fprintf(stderr, "viewbench: %s\n", text.toLocal8Bit().constData());
}

namespace {

std::FILE* g_figures = nullptr; // the standard output that there was

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

double msSince(Clock::time_point from) { return Milliseconds(Clock::now() - from).count(); }

/// ms since the process began, in steps of 10.
double sinceBegin() {
    std::ifstream file("/proc/self/stat");
    std::string text;
    std::getline(file, text);
    text.erase(0, text.rfind(')') + 2);
    constexpr int beforeStart = 19; // fields between the name and the start time
    std::size_t at = 0;
    for (int i = 0; i < beforeStart; ++i)
        at = text.find(' ', at) + 1;
    const double start =
        std::strtod(text.c_str() + at, nullptr) / static_cast<double>(::sysconf(_SC_CLK_TCK));
    timespec now{};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return (static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9 - start) * 1e3;
}

double processorSeconds() {
    rusage used{};
    ::getrusage(RUSAGE_SELF, &used);
    const auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) / 1e6;
    };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

void print(const char* what, double figure, const char* unit, const char* toReach) {
    std::fprintf(g_figures, "%-44s %8.1f %-4s %s\n", what, figure, unit, toReach);
}

void print(const char* what, std::vector<double> times, const char* toReach) {
    if (times.empty()) {
        std::fprintf(g_figures, "%-44s never\n", what);
        return;
    }
    std::sort(times.begin(), times.end());
    std::fprintf(g_figures, "%-44s %8.1f ms   median, %.1f worst of %zu%s%s\n", what,
                 times[times.size() / 2], times.back(), times.size(),
                 *toReach == '\0' ? "" : ", to reach ", toReach);
}

/// Watches what the window draws, up to and with the handing over to the screen, and clicks.
class Watch : public QObject {
public:
    Watch(view::MainWindow& window, int seconds)
        : m_window(window), m_picture(window.findChild<view::PictureView*>()), m_seconds(seconds) {
        window.installEventFilter(this);
    }

    bool eventFilter(QObject* object, QEvent* event) override {
        if (object != &m_window || event->type() != QEvent::UpdateRequest || m_drawing)
            return false;
        m_drawing = true;
        object->event(event);
        m_drawing = false;
        drawn();
        return true;
    }

private:
    void drawn() {
        const auto& snapshot = m_window.snapshot();
        if (!snapshot || snapshot->frame.counts.empty())
            return;
        if (m_firstPicture < 0) {
            m_firstPicture = sinceBegin();
            QTimer::singleShot(3000, this, [this] { begin(); });
        }
        if (m_clicked) {
            if (!m_seen) {
                m_toTool.push_back(msSince(*m_clicked));
                m_seen = true;
            }
            const int newest = m_window.tools().all().back().tool.id;
            for (const view::ToolReading& reading : snapshot->readings)
                if (reading.id == newest && reading.hottest.ok()) {
                    m_toReading.push_back(msSince(*m_clicked));
                    m_clicked.reset();
                    QTimer::singleShot(37, this, [this] { click(); }); // at any time of a frame
                    break;
                }
        }
        if (m_measuring && snapshot->taken != m_shown) {
            m_shown = snapshot->taken;
            m_toScreen.push_back(msSince(snapshot->taken));
        }
    }

    void begin() {
        m_measuring = true;
        m_begin = Clock::now();
        m_processor = processorSeconds();
        QTimer::singleShot(m_seconds * 1000, this, [this] { end(); });
    }

    void end() {
        m_measuring = false;
        const double wall = msSince(m_begin) / 1e3;
        std::fprintf(g_figures, "window %d x %d, frames of %d x %d, platform %s\n",
                     m_window.width(), m_window.height(), m_window.snapshot()->frame.width,
                     m_window.snapshot()->frame.height,
                     QGuiApplication::platformName().toLocal8Bit().constData());
        print("first picture after the start", m_firstPicture, "ms", "to reach 1000");
        print("pictures a second", static_cast<double>(m_toScreen.size()) / wall, "",
              "to reach 25");
        print("from frame to screen", m_toScreen, "80");
        print("of one processor", (processorSeconds() - m_processor) / wall * 100, "%", "");
        auto* silent = m_window.findChild<QAbstractButton*>(QStringLiteral("coreSilent"));
        silent->click();
        m_picture->setMode(view::MouseMode::spot);
        m_window.tools().clear();
        QTimer::singleShot(5000, this, [this] { click(); }); // a question waits in vain then
    }

    void click() {
        if (m_clicks++ == 40) {
            print("click to its tool on the screen, core silent", m_toTool, "50");
            print("click to its reading on the screen", m_toReading, "50");
            std::fflush(g_figures);
            std::_Exit(0); // the core is silent: nobody waits for it
        }
        if (m_window.tools().all().size() == view::Tools::mostSpots)
            m_window.tools().clear();
        const QPointF at(m_picture->width() * (0.2 + 0.01 * m_clicks),
                         m_picture->height() * (0.2 + 0.013 * m_clicks));
        m_seen = false;
        m_clicked = Clock::now();
        for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
            QMouseEvent event(type, at, m_picture->mapToGlobal(at.toPoint()), Qt::LeftButton,
                              Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(m_picture, &event);
        }
    }

    view::MainWindow& m_window;
    view::PictureView* m_picture;
    int m_seconds;
    bool m_drawing = false;
    double m_firstPicture = -1;
    bool m_measuring = false;
    Clock::time_point m_begin;
    Clock::time_point m_shown;
    double m_processor = 0;
    std::vector<double> m_toScreen;
    std::vector<double> m_toTool;
    std::vector<double> m_toReading;
    int m_clicks = 0;
    bool m_seen = false;
    std::optional<Clock::time_point> m_clicked;
};

/// The library's traces, on standard output, go nowhere.
void silenceLibrary() {
    g_figures = ::fdopen(::dup(STDOUT_FILENO), "w");
    const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDOUT_FILENO);
    ::close(nowhere);
}

} // namespace

int main(int argc, char** argv) {
    silenceLibrary();
    const QApplication application(argc, argv);
    view::WindowPlan plan;
    plan.fresh = true;
    view::MainWindow window(std::move(plan));
    window.resize(1280, 800);
    window.show();
    const Watch watch(window, argc > 1 ? std::max(std::atoi(argv[1]), 1) : 20);
    return QApplication::exec();
}
