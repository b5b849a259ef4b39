#pragma once

#include "commands.h"

#include <QCoreApplication>

#include <algorithm>
#include <memory>

namespace irmcore::app {

/// An application object of a kind that draws, without a display. The environment is changed for
/// that. `argc` and `argv` outlive the object and stay as they are.
template <typename Application>
std::unique_ptr<QCoreApplication> makeOffscreen(int& argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Qt takes options of its own out of what it is given, so that is the program's name alone.
    static int onlyTheName = 0;
    onlyTheName = std::min(argc, 1);
    // Qt remarks on what a desktop has and a file does not need, such as a session's directory.
    const QtMessageHandler usual = qInstallMessageHandler(
        [](QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
            if (type == QtCriticalMsg || type == QtFatalMsg)
                complain(text);
        });
    auto application = std::make_unique<Application>(onlyTheName, argv);
    qInstallMessageHandler(usual);
    return application;
}

} // namespace irmcore::app
