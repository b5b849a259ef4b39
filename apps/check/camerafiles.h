#pragma once

#include "finding.h"

#include <QString>
#include <QStringList>

#include <set>
#include <utility>

/// The files of a camera directory, which is the working directory.
namespace irmcore::app::check {

inline constexpr int lensEnd = 7;  ///< lens codes select 0 to 6, and -1 without a lens
inline constexpr int rangeEnd = 3; ///< ranges that the detector core knows

using LensRange = std::pair<int, int>;

QString tablePath(int lens, int range);
QString tableFallbackPath(int lens, int range);
/// The Modify file that is tried first.
QString modifyPath(int lens, int range);

enum class FileState { missing, file, unusable };

/// Whether a file can be read; reports what is there and cannot be.
FileState stateOf(const QString& path, const char* taken, Findings& findings);

/// What Parameter/ and etc/ hold.
struct CameraFiles {
    QStringList tables;         ///< paths of all that are tables by name, fallbacks too
    QStringList modifies;       ///< paths of all that are Modify files by name
    std::set<LensRange> paired; ///< of tables and Modify files

    bool has(const QString& path) const { return tables.contains(path) || modifies.contains(path); }
};

/// Lists them. Reports folders that are missing, and names that are nearly or never read.
/// `storedRange` is that of the settings.
CameraFiles listFiles(int storedRange, Findings& findings);

} // namespace irmcore::app::check
