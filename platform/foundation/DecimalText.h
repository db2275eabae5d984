#pragma once

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <limits>
#include <string_view>
#include <system_error>

namespace tallyforge {

inline bool IsWhiteSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}
inline bool IsDecimalDigit(char c) {
    return c >= '0' && c <= '9';
}

inline std::string_view SkipWhiteSpace(std::string_view text) {
    size_t start = 0;
    while (start < text.size() && IsWhiteSpace(text[start]))
        ++start;
    return text.substr(start);
}

namespace detail {

// The power of ten that the first digit other than 0 stands at, for a number of digits and at most one point.
inline int64_t DecimalMagnitude(std::string_view mantissa) {
    const size_t point = std::min(mantissa.find('.'), mantissa.size());
    const size_t first = mantissa.find_first_not_of("0.");
    if (first == std::string_view::npos) return std::numeric_limits<int64_t>::min() / 2;
    const int64_t distance = static_cast<int64_t>(point) - static_cast<int64_t>(first);
    return first < point ? distance - 1 : distance;
}

} // namespace detail

/// Reads the longest decimal number (sign, digits with a point, exponent) that the text begins with, rounded
/// once to Real; too large gives infinity, too small zero. Gives its length, 0 when there is none (value is
/// then left).
template <class Real>
size_t ReadDecimal(std::string_view text, Real& value) {
    size_t at = 0;
    const bool negative = !text.empty() && text[0] == '-';
    if (!text.empty() && (text[0] == '-' || text[0] == '+')) ++at;
    const size_t start = at;
    size_t digits = 0;
    for (bool point = false; at < text.size(); ++at) {
        if (IsDecimalDigit(text[at]))
            ++digits;
        else if (text[at] == '.' && !point)
            point = true;
        else
            break;
    }
    if (digits == 0) return 0;
    const std::string_view mantissa = text.substr(start, at - start);

    int64_t exponent = 0;
    if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
        size_t next = at + 1;
        const bool below = next < text.size() && text[next] == '-';
        if (next < text.size() && (text[next] == '-' || text[next] == '+')) ++next;
        const size_t firstDigit = next;
        for (; next < text.size() && IsDecimalDigit(text[next]); ++next)
            exponent = std::min<int64_t>(exponent * 10 + (text[next] - '0'), int64_t{1} << 40);
        exponent = below ? -exponent : exponent;
        if (next > firstDigit) at = next;
    }

    Real magnitude = 0;
    const auto outcome = std::from_chars(text.data() + start, text.data() + at, magnitude);
    if (outcome.ec == std::errc::result_out_of_range)
        magnitude = detail::DecimalMagnitude(mantissa) + exponent > 0 ? std::numeric_limits<Real>::infinity()
                                                                      : Real{0};
    value = negative ? -magnitude : magnitude;
    return at;
}

} // namespace tallyforge
