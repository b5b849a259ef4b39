// irmcore-view: a thermal camera in a window.
#include "../../commands.h"
#include "keycourtesy.h"
#include "plan.h"
#include "screenshot.h"

#include <QApplication>
#include <QSocketNotifier>

#include <cerrno>
#include <chrono>
#include <clocale>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/eventfd.h>
#include <unistd.h>

namespace app = irmcore::app;
namespace view = irmcore::view;

void app::complain(const QString& text) {
    std::fprintf(stderr, "irmcore-view: %s\n", text.toLocal8Bit().constData());
}

namespace {

/// The plan is read before there is a display: help and wrong usage take none.
std::optional<view::ViewPlan> readPlan(int argc, char** argv, int& exitCode) {
    const QCoreApplication application(argc, argv);
    QStringList words;
    for (int i = 0; i < argc; ++i)
        words.append(QString::fromLocal8Bit(argv[i]));
    return view::parsePlan(words, exitCode);
}

void nameApplication() {
    QCoreApplication::setOrganizationName(QStringLiteral("irmcore"));
    QCoreApplication::setApplicationName(QStringLiteral("irmcore-view"));
    QCoreApplication::setApplicationVersion(QStringLiteral(IRMCORE_VERSION));
}

/// The library traces what it does on standard output.
void silence() {
    const int nothing = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nothing < 0)
        return;
    std::fflush(stdout);
    ::dup2(nothing, STDOUT_FILENO);
    ::close(nothing);
}

/// Qt remarks on what a desktop has and a picture does not need, such as a session's directory.
void remark(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
    if (type == QtCriticalMsg || type == QtFatalMsg)
        app::complain(text);
}

volatile std::sig_atomic_t s_askedToEnd = -1; // eventfd

void askToEnd(int /*signal*/) {
    const int before = errno;
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t n = ::write(s_askedToEnd, &one, sizeof one);
    errno = before;
}

/// Signals end the program as closing the window does: settings are kept, and the core calibrates
/// by itself again. The descriptor is readable when one has come.
int followSignals() {
    s_askedToEnd = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        std::signal(signal, askToEnd);
    return s_askedToEnd;
}

int run(const view::ViewPlan& plan) {
    using namespace std::chrono_literals;
    QSocketNotifier signals(followSignals(), QSocketNotifier::Read);
    view::MainWindow window(plan.window);
    QObject::connect(&signals, &QSocketNotifier::activated, &window, [&] {
        signals.setEnabled(false);
        window.close();
        // A picture that is wanted is not there yet.
        QCoreApplication::exit(plan.screenshot.isEmpty() ? app::exitClean : app::exitErrors);
    });
    window.show();
    std::unique_ptr<view::Screenshot> screenshot;
    if (!plan.screenshot.isEmpty())
        screenshot = std::make_unique<view::Screenshot>(window, plan.screenshot);
    const int exitCode = QApplication::exec();
    window.hide();
    QApplication::processEvents();
    // A camera whose core is silent is let go of by ending.
    if (!window.leave(1s))
        std::_Exit(exitCode);
    return exitCode;
}

} // namespace

int main(int argc, char** argv) {
    nameApplication();
    int exitCode = app::exitUsage;
    const auto plan = readPlan(argc, argv, exitCode);
    if (!plan)
        return exitCode;
    std::signal(SIGPIPE, SIG_IGN);
    if (!plan->verbose)
        silence();
    if (!plan->screenshot.isEmpty())
        qputenv("QT_QPA_PLATFORM", "offscreen");
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
    int onlyTheName = 1; // Qt takes no options here
    if (!plan->screenshot.isEmpty())
        qInstallMessageHandler(remark);
    const QApplication application(onlyTheName, argv);
    view::KeyCourtesy courtesy;
    qApp->installEventFilter(&courtesy);
    std::setlocale(LC_NUMERIC, "C"); // numbers in files carry a point whatever the user's language
    return run(*plan);
}
