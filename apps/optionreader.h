#pragma once

#include <QCommandLineParser>
#include <QString>
#include <QStringList>

#include <cstddef>
#include <vector>

namespace irmcore::app {

/// Reads the options of a command. The first thing that is wrong is kept.
class OptionReader {
public:
    explicit OptionReader(const QCommandLineParser& parser) : m_parser(parser) {}

    QString wrong;

    bool has(const char* name) const { return m_parser.isSet(QString::fromLatin1(name)); }
    QString text(const char* name) const { return m_parser.value(QString::fromLatin1(name)); }
    void refuse(const char* name, const QString& takes) {
        if (wrong.isEmpty())
            wrong = QStringLiteral("--%1 takes %2, not '%3'")
                        .arg(QString::fromLatin1(name), takes, text(name));
    }

    /// Sets `to` when the option is given.
    void number(const char* name, double low, double high, double& to) {
        if (has(name) && !takeNumber(text(name), low, high, to))
            refuse(name, QStringLiteral("a number from %1 to %2").arg(low).arg(high));
    }
    void whole(const char* name, int low, int high, int& to) {
        bool ok = true;
        const int value = has(name) ? text(name).toInt(&ok) : to;
        if (ok && value >= low && value <= high)
            to = value;
        else
            refuse(name, QStringLiteral("a whole number from %1 to %2").arg(low).arg(high));
    }
    /// Numbers between colons: as many as `numbers` has, of which the last `optional` may be
    /// missing. False when they are not that.
    static bool numbers(const QString& words, double low, double high, std::vector<double*> numbers,
                        int optional = 0) {
        const QStringList parts = words.split(QLatin1Char(':'));
        const int most = static_cast<int>(numbers.size());
        bool ok = parts.size() <= most && parts.size() >= most - optional;
        for (int i = 0; ok && i < static_cast<int>(parts.size()); ++i)
            ok = takeNumber(parts[i], low, high, *numbers[static_cast<std::size_t>(i)]);
        return ok;
    }

private:
    static bool takeNumber(const QString& word, double low, double high, double& to) {
        bool ok = false;
        const double value = word.toDouble(&ok);
        if (!ok || !(value >= low && value <= high))
            return false;
        to = value;
        return true;
    }

    const QCommandLineParser& m_parser;
};

} // namespace irmcore::app
