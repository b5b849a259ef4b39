#include "frametable.h"

#include "../core/truncate.h"
#include "quickreading.h"

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

namespace irmcore {

namespace {

constexpr unsigned char unknown = 0x80;
constexpr std::uint64_t unknownAnywhere = 0x8080808080808080;
constexpr unsigned char codeOk = 0;

unsigned char codeOf(const IrTempStru& reading) {
    const bool edge = reading.status[1] == 'E';
    switch (reading.status[0]) {
    case 'L':
        return edge ? 2 : 1;
    case 'H':
        return edge ? 3 : 4;
    default:
        return codeOk;
    }
}

/// The object's temperature of a corrected count, NaN where it takes the whole reading.
double observe(const Terms& terms, TableCursor& table, unsigned corrected) {
    const TableTemp found = table.find(corrected);
    if (found.place == Place::inside)
        if (const auto seen = fromTableIfSure(found.celsius))
            return observedIfClose(terms, *seen);
    return std::numeric_limits<double>::quiet_NaN();
}

/// The results of all counts, for looking them up.
struct Results {
    const float* temps;
    const unsigned char* statuses;
};

/// A 64-bit processor puts eight statuses at once: what limits it is the number of stores. The
/// board's takes no such store across alignment.
constexpr bool joinsStatuses =
    sizeof(void*) == sizeof(std::uint64_t) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__;

/// Puts the `sizeof...(i)` results of the words at `ad`. Returns their statuses joined by or, in
/// some byte.
template <bool withTemp, bool withStatus, std::size_t... i>
std::uint64_t put(const Results& of, const unsigned short* ad, float* temp, unsigned char* status,
                  std::index_sequence<i...>) {
    constexpr bool joins = joinsStatuses && sizeof...(i) == sizeof(std::uint64_t);
    std::conditional_t<joins, std::uint64_t, unsigned> codes = 0;
    const auto one = [&](std::size_t at) {
        const unsigned short word = ad[at];
        const decltype(codes) code = of.statuses[word];
        if constexpr (joins)
            codes |= code << (8 * at);
        else
            codes |= code;
        if constexpr (withTemp)
            temp[at] = of.temps[word];
        if constexpr (withStatus && !joins)
            status[at] = static_cast<unsigned char>(code);
    };
    (one(i), ...);
    if constexpr (withStatus && joins)
        std::memcpy(status, &codes, sizeof codes);
    return codes;
}

/// Looks every word up. Returns whether every one was known.
template <bool withTemp, bool withStatus>
bool lookUp(const Results& of, const unsigned short* ad, std::size_t count, float* temp,
            unsigned char* status) {
    constexpr std::size_t step = 8;
    std::uint64_t met = 0;
    const auto some = [&](std::size_t i, auto sequence) {
        met |= put<withTemp, withStatus>(of, ad + i, withTemp ? temp + i : nullptr,
                                         withStatus ? status + i : nullptr, sequence);
    };
    std::size_t i = 0;
    for (; i + step <= count; i += step)
        some(i, std::make_index_sequence<step>());
    for (; i < count; ++i)
        some(i, std::make_index_sequence<1>());
    return (met & unknownAnywhere) == 0;
}

/// Whether conversions with the two give the same observations, before limits and drift.
bool seeAlike(const Model& a, const Model& b) {
    return std::memcmp(&a, &b, offsetof(Model, rangeMin)) == 0;
}

bool convertAlike(const TempInfoTab& a, const TempInfoTab& b) {
    constexpr std::size_t begin = offsetof(TempInfoTab, maxAD);
    constexpr std::size_t end = offsetof(TempInfoTab, temp) + sizeof a.temp;
    const auto* first = reinterpret_cast<const unsigned char*>(&a);
    const auto* second = reinterpret_cast<const unsigned char*>(&b);
    return std::memcmp(first + begin, second + begin, end - begin) == 0;
}

} // namespace

void FrameTable::follow(const Conditions& now) {
    const Model& model = now.terms.of;
    const int term = truncateToInt(static_cast<double>(now.shutterDelta));
    const bool fresh = m_entries == nullptr;
    if (fresh)
        m_entries.reset(new (std::nothrow) Entries());
    if (m_entries == nullptr)
        return;
    const bool observed = !fresh && seeAlike(m_key.model, model) &&
                          convertAlike(m_key.table, now.table) && m_key.shutterDelta == term;
    if (!observed)
        m_entries->observed.fill(std::numeric_limits<double>::quiet_NaN());
    if (!observed || m_key.model.rangeMin != model.rangeMin ||
        m_key.model.rangeMax != model.rangeMax || m_key.deltaTemp != now.deltaTemp)
        m_entries->status.fill(unknown);
    m_key = {model, now.table, term, now.deltaTemp};
}

void FrameTable::convert(const Conditions& now, const unsigned short* ad, std::size_t count,
                         float* temp, unsigned char* status) {
    follow(now);
    const auto put = [temp, status](std::size_t i, float celsius, unsigned char code) {
        if (temp != nullptr)
            temp[i] = celsius;
        if (status != nullptr)
            status[i] = code;
    };
    const auto whole = [&now](unsigned short word) {
        return objectTemp(now.terms, now.table, now.shutterDelta, now.deltaTemp, word);
    };
    if (m_entries == nullptr) { // no memory: one by one
        for (std::size_t i = 0; i < count; ++i) {
            const IrTempStru reading = whole(ad[i]);
            put(i, reading.temp, codeOf(reading));
        }
        return;
    }
    Entries& entries = *m_entries;
    const auto pass = [&] {
        const Results of{entries.temp.data(), entries.status.data()};
        if (temp == nullptr)
            return lookUp<false, true>(of, ad, count, temp, status);
        if (status == nullptr)
            return lookUp<true, false>(of, ad, count, temp, status);
        return lookUp<true, true>(of, ad, count, temp, status);
    };
    if (pass())
        return;
    const auto shift = static_cast<unsigned>(m_key.shutterDelta);
    TableCursor cursor(now.table);
    const auto fill = [&](unsigned short word) {
        double& observed = entries.observed[word];
        if (std::isnan(observed))
            observed = observe(now.terms, cursor, word + shift);
        const auto celsius = roundedIfSure(observed, now.deltaTemp);
        if (celsius && *celsius > now.terms.rangeMin && *celsius < now.terms.rangeMax) {
            entries.temp[word] = *celsius;
            entries.status[word] = codeOk;
            return;
        }
        IrTempStru reading{};
        setStatus(reading, "OK");
        if (!concludeIfSure(now.terms, observed, now.deltaTemp, reading))
            reading = whole(word);
        entries.temp[word] = reading.temp;
        entries.status[word] = codeOf(reading);
    };
    for (std::size_t i = 0; i < count; ++i) {
        if (entries.status[ad[i]] == unknown)
            fill(ad[i]);
        put(i, entries.temp[ad[i]], entries.status[ad[i]]);
    }
}

} // namespace irmcore
