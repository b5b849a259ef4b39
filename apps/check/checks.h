#pragma once

#include "../../core/fpga.h"
#include "camerafiles.h"

#include <map>
#include <optional>
#include <vector>

/// What `irmcore check` looks at. The camera directory is the working directory, and `host` runs
/// on it: what the library takes is asked of it.
namespace irmcore::app::check {

/// Looks at Parameter/Setting.
void checkSettings(FPGA& host, int storedRange, Findings& findings);

/// A table as the library reads it, and where it stands.
struct Table {
    QString path;
    TempInfoTab values;
    std::vector<int> lines; ///< of the entries read
    bool sound;             ///< rises, and every entry was as it should be

    int count() const { return static_cast<int>(lines.size()); }
};

/// Looks at one table file of a range. Nothing when there is no table in it.
std::optional<Table> checkTable(FPGA& host, const QString& path, int range, Findings& findings);

/// Whether a table file has as many entries as the library wants before it takes the fallback.
bool hasEntries(const QString& path);

/// Looks at the Modify file of a pair.
void checkModify(FPGA& host, const QString& path, const LensRange& pair, Findings& findings);

/// Looks at whether each pair of lens and range has its files, and whether the ranges of a lens
/// fit together. `tables` are those that could be read, by path.
void checkPairs(const CameraFiles& files, const std::map<QString, Table>& tables, int storedRange,
                Findings& findings);

/// Everything about the camera directory.
Findings checkAll(FPGA& host);

} // namespace irmcore::app::check
