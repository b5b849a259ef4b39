#include "commands.h"
#include "pictures.h"

#include <QGuiApplication>

#include <algorithm>

namespace irmcore::app {

namespace {

/// Qt remarks on what a desktop has and a file does not need, such as a session's directory.
void dropWarnings(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
    if (type == QtCriticalMsg || type == QtFatalMsg)
        complain(text);
}

} // namespace

std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv, bool draws) {
    if (!draws)
        return std::make_unique<QCoreApplication>(argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Qt takes options of its own out of what it is given, so that is the program's name alone.
    static int onlyTheName = 0;
    onlyTheName = std::min(argc, 1);
    const QtMessageHandler usual = qInstallMessageHandler(dropWarnings);
    auto application = std::make_unique<QGuiApplication>(onlyTheName, argv);
    qInstallMessageHandler(usual);
    return application;
}

} // namespace irmcore::app
