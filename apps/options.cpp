#include "options.h"

#include "commands.h"

#include <cstdio>

namespace irmcore::app {

QCommandLineOption option(const char* name, const char* help, const char* value) {
    return {QString::fromLatin1(name), QString::fromUtf8(help), QString::fromLatin1(value)};
}

void addHost(QCommandLineParser& parser) {
    parser.addPositionalArgument(QStringLiteral("host"), QStringLiteral("the program to run"),
                                 QStringLiteral("-- HOST"));
    parser.addPositionalArgument(QStringLiteral("arguments"), QStringLiteral("its arguments"),
                                 QStringLiteral("[ARGUMENTS...]"));
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
}

bool parseWords(QCommandLineParser& parser, const QStringList& words, const QString& usage,
                int& exitCode) {
    if (!parser.parse(words)) {
        complain(parser.errorText());
        exitCode = exitUsage;
        return false;
    }
    if (!parser.isSet(QStringLiteral("help")))
        return true;
    const QString program = QStringLiteral("irmcore");
    QString help = parser.helpText();
    help.replace(help.indexOf(program), program.size(), program + QLatin1Char(' ') + usage);
    std::fputs(help.toLocal8Bit().constData(), stdout);
    exitCode = exitClean;
    return false;
}

} // namespace irmcore::app
