#pragma once

#include "../../calib/modify.h"
#include "../explain/explanation.h"

#include <QString>

#include <array>
#include <map>
#include <optional>
#include <vector>

namespace irmcore::app {

/// Lens and range that a calibration table is for.
struct TableKey {
    int lens;
    int range;
    bool operator<(const TableKey& other) const {
        return lens != other.lens ? lens < other.lens : range < other.range;
    }
};

/// The keys that the files below `directory`/etc are named for.
std::vector<TableKey> tablesIn(const QString& directory);

using ModifyTable = std::array<float, modifyEntries>;

/// What the library reads in a camera directory.
struct DirectoryContent {
    struct Entry {
        std::optional<TempInfoTab> table; ///< as stored, for the reference inside temperature
        ModifyTable factors{};
    };
    std::map<TableKey, Entry> tables;
    std::vector<double> settings; ///< the values of `settingNames`
    Parameters parameters;        ///< those of the settings, as the model takes them
};

/// A value of Parameter/Setting that the library reads.
struct SettingName {
    const char* group; ///< empty at the top level
    const char* key;
    const char* unit;
    double fallback;
};
const std::vector<SettingName>& settingNames();

/// Reads what a directory has for `keys`. Nothing, with a text in `error`, when it is no camera's.
std::optional<DirectoryContent> readDirectory(const QString& directory,
                                              const std::vector<TableKey>& keys, QString& error);

} // namespace irmcore::app
