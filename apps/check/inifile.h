#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <vector>

/// Where things stand in an INI file. This only locates: what a value is has to be asked of
/// `QSettings`, whose rules of lines, groups, quotes and escapes are followed here.
namespace irmcore::app::check {

struct IniEntry {
    QString path;  ///< as `QSettings` names it: unescaped, with the group
    QString group; ///< the path before its last slash; empty at the top level
    QString key;   ///< the path behind it
    int line;      ///< from 1 on
    int lastLine;  ///< the same, but where a quote or a backslash runs on
    bool open;     ///< its last quote is never closed
    bool slashed;  ///< the key itself names a group
};

/// Whether what follows an entry became part of its value.
inline bool runsOn(const IniEntry& entry) { return entry.open || entry.lastLine > entry.line; }

struct IniGroup {
    QString name;
    int line;
    QString odd;   ///< what is wrong with the line; empty when nothing is
    bool topLevel; ///< [General], which is no group
};

struct IniFile {
    std::vector<IniEntry> entries;
    QHash<QString, std::size_t> last; ///< of a path, its last entry
    std::vector<IniGroup> groups;
    std::vector<int> unread;     ///< lines without "=" that are neither group nor comment
    bool byteOrderMark = false;  ///< of UTF-8
    bool carriageReturn = false; ///< ends a line somewhere
    bool nul = false;            ///< a byte of 0 stands somewhere

    /// The entry that `QSettings` takes for a path, the last one; null when there is none.
    const IniEntry* find(const QString& path) const;
    /// Its line, 0 when there is none.
    int lineOf(const QString& path) const;
    /// The line of a group, 0 when there is none.
    int lineOfGroup(const QString& name) const;
    /// Whether a value runs over several lines.
    bool joinsLines() const;
};

IniFile scanIni(const QByteArray& bytes);

} // namespace irmcore::app::check
