#pragma once

#include "inichecks.h"

#include <vector>

namespace irmcore::app::check {

/// An entry of a table file by its key.
struct Entry {
    int celsius;
    int line;
    bool sound; ///< its value is a count
};

/// What a table file says of the extent of its entries.
struct Extent {
    int low = 0;   ///< °C, MinTemp
    int high = 0;  ///< °C, MaxTemp
    int count = 0; ///< TempNum, 0 to 60
};

/// The entries of a table file.
struct Entries {
    std::vector<Entry> read; ///< those that the library reads, rising
    bool complete = true;    ///< all that stand in the file, from MinTemp to MaxTemp
};

/// The path of a key in [ParaSet].
QString scalarPath(const char* key);

/// The extent; reports what is wrong with it. Nothing when there is nothing to go by.
std::optional<Extent> checkExtent(Ini& ini);

/// The entries; reports those that are missing, that are never read, and that are no counts, and a
/// TempNum that is wrong.
Entries checkEntries(Ini& ini, const Extent& extent);

} // namespace irmcore::app::check
