#include "cameraoptions.h"

#include "../options.h"

namespace irmcore::app {

namespace {

/// Reads an index, if the option is there; a text on what is wrong with it.
QString takeIndex(const QCommandLineParser& parser, const char* name, int highest,
                  std::optional<int>& index) {
    const QString option = QString::fromLatin1(name);
    if (!parser.isSet(option))
        return {};
    bool ok = false;
    const int value = parser.value(option).toInt(&ok);
    if (!ok || value < 0 || value > highest)
        return QStringLiteral("--%1 takes 0 to %2, not '%3'")
            .arg(option)
            .arg(highest)
            .arg(parser.value(option));
    index = value;
    return {};
}

} // namespace

void addCameraOptions(QCommandLineParser& parser) {
    parser.addOptions(
        {option("directory", "a camera's directory (a sample one in a temporary place)", "dir"),
         option("range", "measuring range (that of the directory)", "index"),
         option("lens", "lens, 0 to 6 (0)", "index")});
}

QString takeCamera(const QCommandLineParser& parser, CameraChoice& choice) {
    constexpr int highestRange = 9;
    constexpr int highestLens = 6;
    choice.directory = parser.value(QStringLiteral("directory"));
    if (parser.isSet(QStringLiteral("directory")) && choice.directory.isEmpty())
        return QStringLiteral("--directory takes a directory");
    std::optional<int> lens;
    QString wrong = takeIndex(parser, "range", highestRange, choice.range);
    if (wrong.isEmpty())
        wrong = takeIndex(parser, "lens", highestLens, lens);
    choice.lens = lens.value_or(0);
    return wrong;
}

} // namespace irmcore::app
