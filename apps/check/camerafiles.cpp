#include "camerafiles.h"

#include "../../core/settings.h"
#include "names.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <optional>

namespace irmcore::app::check {

namespace {

QString formatted(const char* format, int lens, int range) {
    return QString::asprintf(format, lens, range);
}

/// Lens and range in a file's name, and the name that the library asks for.
struct Named {
    LensRange pair;
    QString right;
};

std::optional<Named> named(const QString& path) {
    static const QRegularExpression table(
        QStringLiteral("\\Aetc/calc_len(-?\\d{1,9})_temp(-?\\d{1,9})(_default)?\\.conf\\z"));
    static const QRegularExpression modify(
        QStringLiteral("\\AParameter/Modify(?:_(-?\\d{1,9}))?_Temp_(-?\\d{1,9})\\z"));
    if (path == modifyPath(0, 0))
        return Named{{0, 0}, path};
    const auto pairOf = [](const QRegularExpressionMatch& match) {
        return LensRange{match.captured(1).toInt(), match.captured(2).toInt()};
    };
    if (const auto match = table.match(path); match.hasMatch()) {
        const auto [lens, range] = pairOf(match);
        return Named{{lens, range},
                     match.captured(3).isEmpty() ? tablePath(lens, range)
                                                 : tableFallbackPath(lens, range)};
    }
    if (const auto match = modify.match(path); match.hasMatch()) {
        const auto [lens, range] = pairOf(match);
        return Named{{lens, range}, modifyPath(lens, range)};
    }
    return std::nullopt;
}

/// Every name below a folder that the library may ask for.
QStringList knownNames(const QString& folder) {
    QStringList paths{QLatin1String(settings::file), QLatin1String(settings::modifyFile)};
    for (int lens = -1; lens < lensEnd; ++lens)
        for (int range = 0; range < rangeEnd; ++range)
            paths << tablePath(lens, range) << tableFallbackPath(lens, range)
                  << modifyPath(lens, range);
    return paths.filter(QRegularExpression(QLatin1Char('^') + folder + QLatin1Char('/')));
}

void checkPair(const QString& path, const LensRange& pair, int storedRange, Findings& findings) {
    const auto& [lens, range] = pair;
    if (lens < -1 || lens >= lensEnd)
        findings.push_back({path,
                            0,
                            Severity::warning,
                            "lens-never-selected",
                            QStringLiteral("no lens code selects lens %1; there are 0 to 6, and -1 "
                                           "without a lens")
                                .arg(lens),
                            {}});
    if ((range < 0 || range >= rangeEnd) && range != storedRange)
        findings.push_back(
            {path,
             0,
             Severity::warning,
             "range-never-selected",
             QStringLiteral("the detector core has the ranges 0 to 2, not %1").arg(range),
             {}});
}

void reportStray(const QString& path, const QString& right, Findings& findings) {
    const bool copy = QFileInfo::exists(right);
    findings.push_back({path,
                        0,
                        copy ? Severity::note : Severity::warning,
                        "stray-file",
                        QStringLiteral("this file is not read; did you mean %1?").arg(right),
                        {}});
}

/// Looks at a name and files it; one that is not read, but nearly, is reported.
void takeFile(const QString& path, int storedRange, CameraFiles& files, Findings& findings) {
    if (const std::optional<Named> name = named(path)) {
        if (name->right != path)
            return reportStray(path, name->right, findings);
        checkPair(path, name->pair, storedRange, findings);
        (path.startsWith(QLatin1String("etc/")) ? files.tables : files.modifies).append(path);
        if (path != modifyPath(0, 0))
            files.paired.insert(name->pair);
        return;
    }
    const QString right = nearest(path, knownNames(path.left(path.indexOf(QLatin1Char('/')))));
    if (!right.isEmpty() && right != path)
        reportStray(path, right, findings);
}

void reportFolder(const QString& name, Findings& findings) {
    QString what = QFileInfo::exists(name) ? QStringLiteral("this is no folder")
                                           : QStringLiteral("there is no such folder");
    for (const QString& other : QDir().entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        if (nearest(other, {name}) == name)
            what += QStringLiteral("; is '%1' meant to be it?").arg(other);
    findings.push_back({name, 0, Severity::error, "missing-folder", what,
                        QStringLiteral("a folder without files")});
}

} // namespace

QString tablePath(int lens, int range) { return formatted(settings::tableFile, lens, range); }

QString tableFallbackPath(int lens, int range) {
    return formatted(settings::tableFallbackFile, lens, range);
}

QString modifyPath(int lens, int range) {
    if (lens != 0)
        return formatted(settings::modifyFileOfLens, lens, range);
    return range != 0 ? QString::asprintf(settings::modifyFileOfRange, range)
                      : QString::fromLatin1(settings::modifyFile);
}

FileState stateOf(const QString& path, const char* taken, Findings& findings) {
    const QFileInfo info(path);
    if (!info.exists())
        return FileState::missing; // a link to nowhere too
    if (!info.isFile()) {
        findings.push_back({path, 0, Severity::error, "not-a-file",
                            info.isDir() ? QStringLiteral("a folder stands where a file belongs")
                                         : QStringLiteral("this is no regular file"),
                            QString::fromLatin1(taken)});
        return FileState::unusable;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        findings.push_back({path, 0, Severity::error, "cannot-be-read", file.errorString(),
                            QString::fromLatin1(taken)});
        return FileState::unusable;
    }
    if (info.size() > settings::largestFile) {
        findings.push_back({path, 0, Severity::error, "too-large",
                            QStringLiteral("%1 bytes; a file is read up to %2")
                                .arg(info.size())
                                .arg(settings::largestFile),
                            QString::fromLatin1(taken)});
        return FileState::unusable;
    }
    return FileState::file;
}

CameraFiles listFiles(int storedRange, Findings& findings) {
    CameraFiles files;
    for (const char* folder : {"Parameter", "etc"}) {
        const QString name = QString::fromLatin1(folder);
        if (!QFileInfo(name).isDir()) {
            reportFolder(name, findings);
            continue;
        }
        const QStringList names = QDir(name).entryList(
            QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
        for (const QString& entry : names)
            takeFile(name + QLatin1Char('/') + entry, storedRange, files, findings);
    }
    return files;
}

} // namespace irmcore::app::check
