#include "wording.h"

namespace irmcore::view {

QString degrees(double celsius) {
    // A minus sign, and none before zero.
    QString number = QString::number(celsius, 'f', 1);
    if (number == QLatin1String("-0.0"))
        number = QStringLiteral("0.0");
    number.replace(QLatin1Char('-'), QChar(0x2212));
    return number + QString::fromUtf8(" °C");
}

QString shortText(const Value& value) {
    if (value.ok())
        return degrees(value.celsius);
    if (value.status == "L" || value.status == "LE")
        return QStringLiteral("< range");
    if (value.status == "H" || value.status == "HE")
        return QStringLiteral("> range");
    return QStringLiteral("no reading");
}

QString statusInWords(const std::string& status) {
    if (status == "OK")
        return QStringLiteral("OK");
    if (status == "L")
        return QStringLiteral("below range");
    if (status == "LE")
        return QStringLiteral("just below range");
    if (status == "HE")
        return QStringLiteral("just above range");
    if (status == "H")
        return QStringLiteral("above range");
    return QStringLiteral("no reading");
}

QString statusInWords(const ToolReading& reading) {
    for (const Value* value : {&reading.hottest, &reading.coldest, &reading.mean})
        if (!value->ok())
            return statusInWords(value->status);
    return statusInWords(reading.hottest.status);
}

QString toolName(ToolKind kind, int number) {
    const char letter = kind == ToolKind::spot ? 'S' : kind == ToolKind::line ? 'L' : 'A';
    return QLatin1Char(letter) + QString::number(number);
}

QString kindName(ToolKind kind) {
    switch (kind) {
    case ToolKind::spot:
        return QStringLiteral("spot");
    case ToolKind::line:
        return QStringLiteral("line");
    case ToolKind::area:
        return QStringLiteral("area");
    }
    return {};
}

QString fromLocal(const std::string& bytes) { return QString::fromLocal8Bit(bytes.c_str()); }

std::string toLocal(const QString& text) { return text.toLocal8Bit().toStdString(); }

} // namespace irmcore::view
