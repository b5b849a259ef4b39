#pragma once

#include "../../core/settings.h"
#include "finding.h"
#include "inifile.h"

#include <QStringList>

#include <optional>

namespace irmcore::app::check {

/// One INI file of the camera directory, which is the working directory, under examination: where
/// its keys stand and what the library reads of them. Findings go to the list it is given.
class Ini {
public:
    /// `path` names a file that can be read.
    Ini(const QString& path, Findings& findings);

    const QString& path() const { return m_path; }
    const IniFile& lines() const { return m_lines; }
    settings::File& values() { return m_values; }

    void add(int line, Severity severity, const char* code, const QString& message,
             const QString& taken = {});

    /// Says more about what is taken in the finding just added.
    void amendTaken(const QString& text) { m_findings.back().taken += text; }

    /// Reports what the format itself swallows: lines that are not read, lines joined to one, keys
    /// and groups that stand twice, bytes that are no text. False when nothing can be read at all.
    bool checkFormat();

    // These report a value that is not what it should be. Nothing is returned where the key is
    // missing or the value was reported.

    std::optional<double> number(const QString& key, double fallback);
    std::optional<int> whole(const QString& key, int fallback);
    /// A whole number of which the library keeps the low 16 bits.
    std::optional<int> word(const QString& key, int fallback);
    /// The same in hexadecimal.
    std::optional<int> hexadecimal(const QString& key, const char* fallback);

    /// Whether the value of an entry is to be looked at: it is there, and no line is joined to it.
    bool examinable(const QString& key) const;

private:
    QString shown(const QString& key);
    bool isList(const QString& key);
    void reportUnreadable(const QString& key, const char* code, const QString& what,
                          const QString& taken);
    void tooLarge(const QString& key, const QString& taken);
    void checkDuplicates();
    void checkKeysAgree();

    QString m_path;
    Findings& m_findings;
    IniFile m_lines;
    settings::File m_values;
};

/// A key that the library reads.
struct KnownKey {
    QString group; ///< empty at the top level
    QString key;
    QString fallback; ///< what is taken when it is missing

    QString path() const { return group.isEmpty() ? key : group + QLatin1Char('/') + key; }
};

/// Reports groups and keys that none of the `known` is, with the nearest. In `tableGroup` (empty:
/// none) keys are whole numbers, which are not looked at there. Returns the paths that were meant,
/// so that they need not be reported as missing too.
QStringList checkNames(Ini& ini, const std::vector<KnownKey>& known,
                       const QString& tableGroup = {});

/// Reports the known keys that are neither there nor in `meant`.
void checkMissing(Ini& ini, const std::vector<KnownKey>& expected, const QStringList& meant,
                  Severity severity);

} // namespace irmcore::app::check
