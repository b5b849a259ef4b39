#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <vector>

namespace irmcore::app {

/// A program to be started with our object preloaded.
struct HostProcess {
    QByteArray program;            ///< absolute path
    std::vector<QByteArray> words; ///< the program as it was named, and its arguments
    QString directory;             ///< to work in; empty for the present one
    QByteArray preload;            ///< path of the object
    QByteArray planName;           ///< environment variable ...
    int plan = -1;                 ///< ... that names the process and this descriptor
    QByteArray courierName;        ///< the same, if there is one, ...
    int courier = -1;              ///< ... for the pipe of what it is observed to do
    std::function<void()> started; ///< called once the host has both; signals are blocked then
};

/// A copy of a descriptor that a host inherits; negative on failure. Its number is high if it can
/// be: a host gets those that it would get without us.
int inheritable(int descriptor);

/// The path of the object to preload. Empty, with a text in `error`, when it cannot be found or
/// not be preloaded.
QByteArray preloadObject(QString& error);

/// The program that a shell would run for this word, when an object can be preloaded into it.
/// Else nothing: what is wrong has been said, and `exitCode` is 127 when there is none, 126 when it
/// cannot be executed, 2 when nothing can be preloaded.
QByteArray hostProgram(const QByteArray& word, int& exitCode);

/// Runs the program and returns its exit code as a shell does: 128 and the signal when one ended
/// it. SIGINT, SIGTERM, SIGHUP and SIGQUIT that others send to this process are passed on; not for
/// use beside other threads.
int runHost(const HostProcess& host);

} // namespace irmcore::app
