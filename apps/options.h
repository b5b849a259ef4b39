#pragma once

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QString>
#include <QStringList>

namespace irmcore::app {

/// An option of a command; without `value` a switch.
QCommandLineOption option(const char* name, const char* help, const char* value = "");

/// Has everything from the first word that is no option taken as a program and its arguments.
void addHost(QCommandLineParser& parser);

/// Parses the words of a command, of which the first is skipped. False, with how the program is to
/// end in `exitCode`, when they are wrong or ask for help; what there is to say has been printed.
/// `usage` stands behind "irmcore" in the help.
bool parseWords(QCommandLineParser& parser, const QStringList& words, const QString& usage,
                int& exitCode);

} // namespace irmcore::app
