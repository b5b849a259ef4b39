#pragma once

#include "../snapshot.h"

#include <QString>

namespace irmcore::view {

/// "37.2 °C".
QString degrees(double celsius);
/// A temperature, or in few words why there is none: "> range".
QString shortText(const Value& value);
/// A status in words; of "OK" "OK".
QString statusInWords(const std::string& status);
/// What keeps a tool's reading from being relied on, else "OK".
QString statusInWords(const ToolReading& reading);

/// "S1", "L2", "A3".
QString toolName(ToolKind kind, int number);
/// "spot", "line", "area".
QString kindName(ToolKind kind);

/// Bytes of the library or of a file's name.
QString fromLocal(const std::string& bytes);
std::string toLocal(const QString& text);

} // namespace irmcore::view
