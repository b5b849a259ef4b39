#include "inichecks.h"

#include <QFile>
#include <QSet>

#include <cmath>

namespace irmcore::app::check {

namespace {

QByteArray bytesOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

constexpr int wordMax = 0xFFFF;

/// The key without its group.
QString nameIn(const QString& path) { return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1); }

} // namespace

Ini::Ini(const QString& path, Findings& findings)
    : m_path(path), m_findings(findings), m_lines(scanIni(bytesOf(path))),
      m_values(path.toUtf8().constData()) {}

void Ini::add(int line, Severity severity, const char* code, const QString& message,
              const QString& taken) {
    m_findings.push_back({m_path, line, severity, code, message, taken});
}

bool Ini::checkFormat() {
    if (m_lines.nul) {
        add(0, Severity::error, "encoding",
            QStringLiteral("bytes of 0, as in UTF-16; the file has to be plain text"),
            QStringLiteral("a file without keys"));
        return false;
    }
    if (m_lines.byteOrderMark)
        add(1, Severity::note, "byte-order-mark",
            QStringLiteral("the file begins with a byte order mark"));
    if (m_lines.carriageReturn)
        add(1, Severity::note, "carriage-return",
            QStringLiteral("lines end with a carriage return"));
    for (const int line : m_lines.unread)
        add(line, Severity::warning, "line-not-read",
            QStringLiteral("no \"=\", and no comment (those begin with \";\")"));
    for (const IniGroup& group : m_lines.groups)
        if (!group.odd.isEmpty())
            add(group.line, Severity::warning, "group-line", group.odd,
                QStringLiteral("[%1]").arg(group.name));
    for (const IniEntry& entry : m_lines.entries)
        if (runsOn(entry))
            add(entry.line, Severity::error, "joined-lines",
                entry.open ? QStringLiteral("a quote stays open: all from here on is one value")
                           : QStringLiteral("lines %1 to %2 are one value: a quote goes over them, "
                                            "or a backslash ends the line")
                                 .arg(entry.line)
                                 .arg(entry.lastLine),
                shown(entry.path).simplified().left(40));
    for (const IniEntry& entry : m_lines.entries)
        if (entry.slashed)
            add(entry.line, Severity::warning, "slash-in-key",
                QStringLiteral("a slash or backslash makes %1 a key of [%2]; the library may not "
                               "see it")
                    .arg(entry.key, entry.group));
    checkDuplicates();
    checkKeysAgree();
    return true;
}

void Ini::checkDuplicates() {
    QSet<QString> groups;
    for (const IniGroup& group : m_lines.groups) {
        if (groups.contains(group.name))
            add(group.line, Severity::note, "duplicate-group",
                QStringLiteral("[%1] stands twice; both are read").arg(group.name));
        groups.insert(group.name);
    }
    for (const IniEntry& entry : m_lines.entries) {
        const IniEntry* last = m_lines.find(entry.path);
        if (last != &entry)
            add(entry.line, Severity::warning, "duplicate-key",
                QStringLiteral("%1 stands again in line %2, which wins")
                    .arg(entry.key)
                    .arg(last->line),
                shown(entry.path));
    }
}

/// The scanner follows QSettings; should it ever fail to, that has to be seen.
void Ini::checkKeysAgree() {
    QSet<QString> scanned;
    for (const IniEntry& entry : m_lines.entries)
        scanned.insert(entry.path);
    const QStringList keys = m_values.keys();
    for (const QString& key : keys)
        if (!scanned.contains(key))
            add(0, Severity::warning, "key-not-located",
                QStringLiteral("%1 is read, but from which line is not clear").arg(key));
}

bool Ini::examinable(const QString& key) const {
    const IniEntry* entry = m_lines.find(key);
    return entry != nullptr && !runsOn(*entry);
}

bool Ini::isList(const QString& key) {
    const int type = m_values.value(key).userType();
    return type == QMetaType::QStringList || type == QMetaType::QVariantList;
}

QString Ini::shown(const QString& key) {
    const QVariant value = m_values.value(key);
    return isList(key) ? value.toStringList().join(QLatin1Char(',')) : value.toString();
}

void Ini::reportUnreadable(const QString& key, const char* code, const QString& what,
                           const QString& taken) {
    const QString text = shown(key);
    const QString name = nameIn(key);
    if (isList(key))
        add(m_lines.lineOf(key), Severity::error, "comma",
            QStringLiteral("%1: '%2' has a comma, which makes a list of it; decimals take a point")
                .arg(name, text),
            taken);
    else
        add(m_lines.lineOf(key), Severity::error, code,
            QStringLiteral("%1: '%2' is %3").arg(name, text, what), taken);
}

void Ini::tooLarge(const QString& key, const QString& taken) {
    add(m_lines.lineOf(key), Severity::error, "more-than-16-bits",
        QStringLiteral("%1: '%2' has more than 16 bits").arg(nameIn(key), shown(key)), taken);
}

std::optional<double> Ini::number(const QString& key, double fallback) {
    if (!examinable(key))
        return std::nullopt;
    bool ok = false;
    const double value = m_values.value(key).toDouble(&ok);
    const auto taken = static_cast<double>(m_values.number(key, fallback));
    if (ok && !std::isnan(value))
        return taken;
    reportUnreadable(key, "not-a-number", QStringLiteral("no number"), QString::number(taken));
    return std::nullopt;
}

std::optional<int> Ini::whole(const QString& key, int fallback) {
    if (!examinable(key))
        return std::nullopt;
    bool ok = false;
    m_values.value(key).toInt(&ok);
    const int taken = m_values.integer(key, fallback);
    const qlonglong wide = m_values.value(key).toLongLong();
    if (ok && wide == taken)
        return taken;
    if (ok)
        add(m_lines.lineOf(key), Severity::error, "out-of-range",
            QStringLiteral("%1: '%2' has more than 32 bits").arg(nameIn(key), shown(key)),
            QString::number(taken));
    else
        reportUnreadable(key, "not-a-number", QStringLiteral("no whole number"),
                         QString::number(taken));
    return std::nullopt;
}

std::optional<int> Ini::word(const QString& key, int fallback) {
    if (!examinable(key))
        return std::nullopt;
    bool ok = false;
    const qlonglong wide = m_values.value(key).toLongLong(&ok);
    if (!ok || (wide >= 0 && wide <= wordMax))
        return whole(key, fallback);
    const auto taken = static_cast<unsigned>(m_values.integer(key, fallback)) & 0xFFFFU;
    tooLarge(key, QString::number(taken));
    return std::nullopt;
}

std::optional<int> Ini::hexadecimal(const QString& key, const char* fallback) {
    if (!examinable(key))
        return std::nullopt;
    bool ok = false;
    const qlonglong value = m_values.value(key).toString().toLongLong(&ok, 16);
    const int taken = m_values.hexadecimal(key, fallback);
    const QString text =
        QStringLiteral("0x%1").arg(QString::number(taken, 16).toUpper(), 4, QLatin1Char('0'));
    if (ok && value >= 0 && value <= wordMax)
        return taken;
    if (ok)
        tooLarge(key, text);
    else
        reportUnreadable(key, "not-hexadecimal", QStringLiteral("no hexadecimal number"), text);
    return std::nullopt;
}

} // namespace irmcore::app::check
