#include "inifile.h"

#include <algorithm>

namespace irmcore::app::check {

namespace {

bool isBreak(char c) { return c == '\n' || c == '\r'; }
bool isSpace(char c) { return isBreak(c) || c == ' ' || c == '\t'; }

/// One logical line: from the first character that counts to the end, exclusive.
struct Span {
    int begin = 0;
    int end = 0;
    int equals = -1;   ///< the first "=" outside quotes, in the file; -1 without
    bool open = false; ///< a quote is never closed
};

/// Cuts a file into logical lines: a quote or a backslash carries a line on, a semicolon ends it
/// and begins a comment.
class Cutter {
public:
    explicit Cutter(const QByteArray& bytes)
        : m_bytes(bytes), m_size(static_cast<int>(bytes.size())) {}

    /// The next line; false at the end.
    bool next(Span& span) {
        skip([](char c) { return isSpace(c); });
        while (m_at < m_size && m_bytes[m_at] == ';') {
            skip([](char c) { return !isBreak(c); });
            skip([](char c) { return isSpace(c); });
        }
        span = {m_at, m_at, -1, false};
        bool quoted = false;
        for (; m_at < m_size; ++m_at) {
            const char c = m_bytes[m_at];
            if (!quoted && (isBreak(c) || c == ';'))
                break;
            if (c == '"')
                quoted = !quoted;
            else if (c == '=' && !quoted && span.equals < 0)
                span.equals = m_at;
            else if (c == '\\')
                passEscaped();
        }
        m_at = std::min(m_at, m_size);
        span.end = m_at;
        span.open = quoted;
        return span.end > span.begin;
    }

private:
    template <typename Test>
    void skip(Test test) {
        while (m_at < m_size && test(m_bytes[m_at]))
            ++m_at;
    }

    /// What follows a backslash belongs to the line: one character, or both of a line's end.
    void passEscaped() {
        if (++m_at + 1 < m_size && isBreak(m_bytes[m_at]) && isBreak(m_bytes[m_at + 1]) &&
            m_bytes[m_at] != m_bytes[m_at + 1])
            ++m_at;
    }

    const QByteArray& m_bytes;
    int m_size;
    int m_at = 0;
};

/// Counts lines of a file from front to back.
class LineCounter {
public:
    explicit LineCounter(const QByteArray& bytes) : m_bytes(bytes) {}

    /// The line of a place that is not before the last one asked for.
    int at(int place) {
        for (; m_at < place; ++m_at)
            if (m_bytes[m_at] == '\n' || (m_bytes[m_at] == '\r' && (m_at + 1 == m_bytes.size() ||
                                                                    m_bytes[m_at + 1] != '\n')))
                ++m_line;
        return m_line;
    }

private:
    const QByteArray& m_bytes;
    int m_at = 0;
    int m_line = 1;
};

/// A key or group without its escapes: %XX and %UXXXX are characters, a backslash is a slash.
QString unescaped(const QByteArray& raw) {
    const QString text = QString::fromUtf8(raw);
    QString result;
    for (int i = 0; i < text.size(); ++i) {
        if (text[i] == QLatin1Char('\\')) {
            result += QLatin1Char('/');
            continue;
        }
        const bool wide = text.mid(i + 1, 1) == QLatin1String("U");
        const int first = i + (wide ? 2 : 1);
        const int digits = wide ? 4 : 2;
        bool ok = false;
        ushort code = 0;
        if (text[i] == QLatin1Char('%') && first + digits <= text.size())
            code = text.mid(first, digits).toUShort(&ok, 16);
        result += ok ? QChar(code) : text[i];
        if (ok)
            i = first + digits - 1;
    }
    return result;
}

IniGroup groupOf(const QByteArray& text, int line) {
    const auto close = text.indexOf(']');
    const QByteArray name = text.mid(1, close < 0 ? -1 : close - 1).trimmed();
    IniGroup group{unescaped(name), line, {}, false};
    if (close < 0)
        group.odd = QStringLiteral("\"]\" is missing");
    else if (!text.mid(close + 1).trimmed().isEmpty())
        group.odd = QStringLiteral("what follows \"]\" is not read");
    const QByteArray lower = name.toLower();
    if (lower == "general")
        group = {{}, line, group.odd, true};
    else if (lower == "%general")
        group.name = QString::fromLatin1(name.mid(1));
    return group;
}

} // namespace

const IniEntry* IniFile::find(const QString& path) const {
    const auto found = last.constFind(path);
    return found == last.constEnd() ? nullptr : &entries[*found];
}

int IniFile::lineOf(const QString& path) const {
    const IniEntry* entry = find(path);
    return entry == nullptr ? 0 : entry->line;
}

int IniFile::lineOfGroup(const QString& name) const {
    const auto found = std::find_if(groups.begin(), groups.end(),
                                    [&](const IniGroup& g) { return g.name == name; });
    return found == groups.end() ? 0 : found->line;
}

bool IniFile::joinsLines() const { return std::any_of(entries.begin(), entries.end(), runsOn); }

IniFile scanIni(const QByteArray& whole) {
    IniFile file;
    file.byteOrderMark = whole.startsWith("\xEF\xBB\xBF");
    file.carriageReturn = whole.contains('\r');
    file.nul = whole.contains('\0');
    const QByteArray bytes = whole.mid(file.byteOrderMark ? 3 : 0);
    Cutter cutter(bytes);
    LineCounter lines(bytes);
    QString prefix; // of the group's keys
    for (Span span; cutter.next(span);) {
        const int line = lines.at(span.begin);
        const QByteArray text = bytes.mid(span.begin, span.end - span.begin);
        if (text.startsWith('[')) {
            file.groups.push_back(groupOf(text, line));
            const IniGroup& group = file.groups.back();
            prefix = group.topLevel ? QString() : group.name + QLatin1Char('/');
        } else if (span.equals < 0) {
            file.unread.push_back(line);
        } else {
            const QString key = unescaped(text.left(span.equals - span.begin).trimmed());
            const QString path = prefix + key;
            const auto slash = path.lastIndexOf(QLatin1Char('/'));
            file.last.insert(path, file.entries.size());
            file.entries.push_back({path, slash < 0 ? QString() : path.left(slash),
                                    path.mid(slash + 1), line, lines.at(span.end - 1), span.open,
                                    key.contains(QLatin1Char('/'))});
        }
    }
    return file;
}

} // namespace irmcore::app::check
