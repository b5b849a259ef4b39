#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace irmcore {

/// The value of a plain decimal number in UTF-16: digits, with a decimal point among them or none,
/// at most 15 of them, a minus sign before them or none. The double nearest to it, as any correct
/// conversion gives, for a fraction of what a general one costs. Nothing for every other text,
/// though it may be a number to others. Pure; reentrant.
constexpr std::optional<double> plainNumber(std::u16string_view text) {
    // Whole numbers of so many digits are exact as double, and so are these divisors.
    constexpr std::size_t mostDigits = 15;
    constexpr std::array<double, mostDigits> tens{1e0, 1e1, 1e2,  1e3,  1e4,  1e5,  1e6, 1e7,
                                                  1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14};
    const bool negative = !text.empty() && text.front() == u'-';
    if (negative)
        text.remove_prefix(1);
    if (text.size() > mostDigits + 1)
        return std::nullopt;
    const std::size_t point = text.find(u'.');
    const bool whole = point == std::u16string_view::npos;
    const std::size_t digits = text.size() - (whole ? 0 : 1);
    if (digits == 0 || digits > mostDigits || point == 0 || point + 1 == text.size())
        return std::nullopt;
    std::int64_t number = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i == point)
            continue;
        if (text[i] < u'0' || text[i] > u'9')
            return std::nullopt;
        number = number * 10 + (text[i] - u'0');
    }
    // A quotient of two exact numbers is rounded once, to the nearest.
    const double value = static_cast<double>(number) / tens[whole ? 0 : digits - point];
    return negative ? -value : value;
}

} // namespace irmcore
