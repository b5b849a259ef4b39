#pragma once

#include <QSettings>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>

/// The configuration files: every group, key and default, once. All paths are relative to the
/// working directory; a missing file or key is no error and gives the default. A file that
/// cannot be read or is too large counts as one without keys that once, and standard error says
/// why; so does, without a word, what is no regular file. A value that is there but is no number
/// ("nan" is none) reads as 0. The library only reads these files.
namespace irmcore::settings {

/// Bytes of a file, at most: ten times the fullest of them. It bounds what QSettings makes of one,
/// which takes all of it into memory, looks through the rest of it at every "[", and follows lists
/// within lists, eight bytes each, as deep as they go (at this size some 2 MB of stack).
inline constexpr int largestFile = 32768;

// clang-format off

/// The camera's persistent configuration.
inline constexpr char file[] = "Parameter/Setting";

inline constexpr char calibrationGroup[] = "BiaoDing";
inline constexpr char tempRange[]        = "TempRange"; // index of the measuring range
inline constexpr int  defaultTempRange   = 0;
inline constexpr char intTime[]          = "IntTime%1"; // of range %1, raw number of the core
inline constexpr int  defaultIntTimeLow  = 100;         // range 0
inline constexpr int  defaultIntTimeHigh = 190;         // the others

// The VSK's reference temperature stands twice: at the top level for the start-up, and in the
// calibration group for the switching of ranges.
inline constexpr char   vskTemp[]        = "VSKTemp";   // °C
inline constexpr double defaultVskTemp   = 40.0;
inline constexpr char   vskValueLow[]    = "VSKValue_Range0"; // top level, raw number of the core
inline constexpr int    defaultVskLow    = 1875;
inline constexpr char   vskValueHigh[]   = "VSKValue_Range1"; // top level
inline constexpr int    defaultVskHigh   = 1980;

inline constexpr char   parameterGroup[] = "GlobalPara";
inline constexpr char   emiss[]          = "Emiss";     // fraction
inline constexpr double defaultEmiss     = 0.95;
inline constexpr char   distance[]       = "Distan";    // m
inline constexpr double defaultDistance  = 5.0;
inline constexpr char   offset[]         = "Offset";    // °C
inline constexpr double defaultOffset    = 0.0;
inline constexpr char   envTemp[]        = "Env";       // °C
inline constexpr double defaultEnvTemp   = 25.0;
inline constexpr char   humid[]          = "Humid";     // fraction
inline constexpr double defaultHumid     = 0.6;
inline constexpr char   reflecTemp[]     = "Reflec";    // °C
inline constexpr double defaultReflecTemp = 25.0;

/// A calibration table, by lens index and range index, and its fallback.
inline constexpr char tableFile[]         = "etc/calc_len%d_temp%d.conf";
inline constexpr char tableFallbackFile[] = "etc/calc_len%d_temp%d_default.conf";
inline constexpr int  tableFileBytes      = 50; // of a path, its end included

inline constexpr char scalarGroup[]  = "ParaSet";
inline constexpr char maxAd[]        = "MaxAD";    // hexadecimal
inline constexpr char defaultMaxAd[] = "0xFFFF";
inline constexpr char minAd[]        = "MinAD";    // hexadecimal
inline constexpr char defaultMinAd[] = "0";
inline constexpr char baseTemp[]     = "BaseTemp"; // °C
inline constexpr int  defaultBaseTemp = 30;
inline constexpr char minTemp[]      = "MinTemp";  // °C, first key of the entries
inline constexpr int  defaultMinTemp = 0;
inline constexpr char maxTemp[]      = "MaxTemp";  // °C, last key of the entries
inline constexpr int  defaultMaxTemp = 0;
inline constexpr char tempNum[]      = "TempNum";  // number of entries
inline constexpr int  defaultTempNum = 0;

inline constexpr char entryGroup[]   = "Temp2AD";  // keys are °C in decimal, values hexadecimal
inline constexpr int  entryStep      = 10;         // °C from key to key

/// Modify files: factors at the top level, keyed "Averg_" and an inside temperature in °C.
inline constexpr char modifyFile[]        = "Parameter/Modify";
inline constexpr char modifyFileOfLens[]  = "Parameter/Modify_%d_Temp_%d"; // lens not 0, range
inline constexpr char modifyFileOfRange[] = "Parameter/Modify_Temp_%d";    // lens 0, range not 0

// clang-format on

/// An INI file opened for one reading operation, so that what was written in the meantime is seen.
class File {
public:
    /// Opens `path`. A file written within the last 20 ms is given that time first: QSettings takes
    /// a file of the same size and time stamp for unchanged, and a second write within the stamp's
    /// resolution would go unnoticed. (On a file system whose stamps are whole seconds, a rewrite
    /// of the same length within one second still can.)
    explicit File(const char* path);

    int integer(const QString& key, int fallback) const;
    float number(const QString& key, double fallback) const;
    float number(const char* key, double fallback) const {
        return number(QLatin1String(key), fallback);
    }
    /// The low 16 bits of a hexadecimal text, with or without 0x; 0 when it is none.
    unsigned short hexadecimal(const QString& key, const char* fallback) const;
    /// The same; nothing when the key is missing.
    std::optional<unsigned short> hexadecimal(const QString& key) const;
    /// What the file has for a key. A list that claims to be longer than memory makes Qt 5 throw at
    /// its whole group: that counts as one without keys then, and standard error says so.
    QVariant value(const QString& key, const QVariant& fallback = {}) const;
    /// The keys of the group and of those within it; none where Qt 5 throws at any group.
    QStringList keys() const;
    void beginGroup(const char* name) { m_settings.beginGroup(QLatin1String(name)); }
    void endGroup() { m_settings.endGroup(); }

private:
    /// What `read` gives, or `otherwise` where it throws.
    template <typename Read, typename Result>
    Result orElse(Read read, Result otherwise) const;

    QSettings m_settings;
    mutable bool m_tooLong = false; ///< said so
};

/// The index of the measuring range last chosen.
int storedTempRange();

} // namespace irmcore::settings
