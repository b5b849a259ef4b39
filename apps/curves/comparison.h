#pragma once

#include "directory.h"

#include <vector>

namespace irmcore::app {

/// Two calibration tables of one lens and range, over all counts.
struct TableDifference {
    TableKey key;
    bool first;         ///< whether the first directory has it
    bool second;        ///< whether the second has
    int counts;         ///< that both convert
    int onlyFirst;      ///< counts that the first converts alone
    int onlySecond;     ///< and the second
    double largest;     ///< of the absolute differences, °C
    unsigned at;        ///< the lowest count that has it
    double firstThere;  ///< °C
    double secondThere; ///< °C
    double mean;        ///< of the absolute differences, °C
};

/// What other Modify factors do to the shutter temperature that readings start from, second less
/// first: a scene as warm as the shutter reads so much higher.
struct ModifyDifference {
    static constexpr std::array<double, 6> insides{-10, 10, 20, 30, 40, 50}; ///< °C
    TableKey key;
    std::array<double, insides.size()> effects; ///< °C, at `insides`
    double largest;                             ///< of all half degrees, absolute, °C
    double at;                                  ///< the lowest inside temperature that has it, °C
};

/// A parameter that differs.
struct SettingDifference {
    const SettingName* name;
    double first;
    double second;
    double largest; ///< what it does to a reading at most, °C; not a number where it does nothing
    double at;      ///< °C of the object, in steps of 10 over the first directory's range
};

struct Comparison {
    std::vector<TableDifference> tables;     ///< all, largest first
    std::vector<ModifyDifference> factors;   ///< those that differ, largest first
    std::vector<SettingDifference> settings; ///< those that differ, largest first
    /// Whether anything differs by more than `bound` °C. A table that one of them has not does.
    bool exceeds(double bound) const;
};

Comparison compare(const DirectoryContent& first, const DirectoryContent& second);

/// The reported temperature of a count, without a shutter term; not a number outside the table.
double reportedTemp(const std::optional<TempInfoTab>& table, unsigned ad);

} // namespace irmcore::app
