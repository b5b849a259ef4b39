#include "inichecks.h"
#include "names.h"

#include <QSet>

#include <algorithm>

namespace irmcore::app::check {

namespace {

bool isWholeNumber(const QString& key) {
    bool ok = false;
    key.toInt(&ok);
    return ok;
}

/// One pass over the names of a file.
class NameCheck {
public:
    NameCheck(Ini& ini, const std::vector<KnownKey>& known, const QString& tableGroup)
        : m_ini(ini), m_known(known), m_tableGroup(tableGroup) {
        for (const KnownKey& key : known)
            if (!key.group.isEmpty() && !m_groups.contains(key.group))
                m_groups.append(key.group);
        if (!tableGroup.isEmpty())
            m_groups.append(tableGroup);
    }

    QStringList run() {
        for (const IniEntry& entry : m_ini.lines().entries)
            if (!homeOf(entry.key).isEmpty())
                m_housing.insert(entry.group);
        for (const IniGroup& group : m_ini.lines().groups)
            if (!group.topLevel && !m_groups.contains(group.name))
                checkGroup(group);
        for (const IniEntry& entry : m_ini.lines().entries)
            if (!m_settled.contains(entry.group) && !entry.slashed)
                checkKey(entry);
        return m_meant;
    }

private:
    void checkGroup(const IniGroup& group) {
        const QString right = nearest(group.name, m_groups);
        if (!right.isEmpty()) {
            m_ini.add(group.line, Severity::error, "misspelt-group",
                      QStringLiteral("[%1] is not read; did you mean [%2]?").arg(group.name, right),
                      QStringLiteral("a file without [%1]").arg(right));
            for (const KnownKey& key : m_known)
                if (key.group == right)
                    m_meant.append(key.path());
            m_settled.insert(group.name);
        } else if (!m_housing.contains(group.name)) {
            m_ini.add(group.line, Severity::note, "unknown-group",
                      QStringLiteral("[%1] is not read").arg(group.name));
            m_settled.insert(group.name);
        }
    }

    /// The path of a key where it is read; empty when it is read nowhere.
    QString homeOf(const QString& key) const {
        for (const KnownKey& known : m_known)
            if (known.key == key)
                return known.path();
        return !m_tableGroup.isEmpty() && isWholeNumber(key) ? m_tableGroup + QLatin1Char('/') + key
                                                             : QString();
    }

    const KnownKey* known(const QString& path) const {
        const auto found = std::find_if(m_known.begin(), m_known.end(),
                                        [&](const KnownKey& k) { return k.path() == path; });
        return found == m_known.end() ? nullptr : &*found;
    }

    /// What the library takes for a key that is written elsewhere or otherwise.
    QString takenFor(const QString& path) {
        if (m_ini.lines().find(path) != nullptr)
            return m_ini.values().value(path).toString();
        const KnownKey* key = known(path);
        return key == nullptr ? QString() : key->fallback;
    }

    void misplaced(const IniEntry& entry, const char* code, const QString& message,
                   const QString& right) {
        const bool given = m_ini.lines().find(right) != nullptr;
        m_ini.add(entry.line, given ? Severity::warning : Severity::error, code, message,
                  takenFor(right));
        m_meant.append(right);
    }

    void checkKey(const IniEntry& entry) {
        if (known(entry.path) != nullptr ||
            (!m_tableGroup.isEmpty() && entry.group == m_tableGroup))
            return;
        const QString home = homeOf(entry.key);
        if (!home.isEmpty()) {
            const auto slash = home.lastIndexOf(QLatin1Char('/'));
            const QString place = slash < 0
                                      ? QStringLiteral("at the top of the file, above every group")
                                      : QStringLiteral("in [%1]").arg(home.left(slash));
            misplaced(entry, "wrong-group",
                      QStringLiteral("%1 is not read here, but %2").arg(entry.key, place), home);
            return;
        }
        QStringList candidates;
        for (const KnownKey& key : m_known)
            if (key.group == entry.group)
                candidates.append(key.key);
        const QString right = nearest(entry.key, candidates);
        if (right.isEmpty())
            m_ini.add(entry.line, Severity::note, "unknown-key",
                      QStringLiteral("%1 is not read").arg(entry.key));
        else
            misplaced(entry, "misspelt-key",
                      QStringLiteral("%1 is not read; did you mean %2?").arg(entry.key, right),
                      KnownKey{entry.group, right, {}}.path());
    }

    Ini& m_ini;
    const std::vector<KnownKey>& m_known;
    QString m_tableGroup;
    QStringList m_groups;
    QSet<QString> m_housing; // groups with keys that are read, here or elsewhere
    QSet<QString> m_settled; // groups of which everything is said
    QStringList m_meant;
};

} // namespace

QStringList checkNames(Ini& ini, const std::vector<KnownKey>& known, const QString& tableGroup) {
    return NameCheck(ini, known, tableGroup).run();
}

void checkMissing(Ini& ini, const std::vector<KnownKey>& expected, const QStringList& meant,
                  Severity severity) {
    if (ini.lines().joinsLines())
        return; // the key stands in there, as the one finding says
    for (const KnownKey& key : expected)
        if (ini.lines().find(key.path()) == nullptr && !meant.contains(key.path()))
            ini.add(ini.lines().lineOfGroup(key.group), severity, "missing-key",
                    QStringLiteral("%1 is missing").arg(key.path()), key.fallback);
}

} // namespace irmcore::app::check
