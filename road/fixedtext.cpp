#include "fixedtext.h"

#include <array>
#include <cmath>

QString FixedText::number(double value, int decimals)
{
    // The value times 10^decimals is exact in the 64-bit mantissa of a long double
    // (53 bits and at most 10 more), so rounding it rounds the exact value.
    static constexpr std::array<long double, 4> Scale{1.0L, 10.0L, 100.0L, 1000.0L};
    if (decimals < 0 || decimals >= int(Scale.size()) || !std::isfinite(value)
        || std::fabs(value) >= 1e15 || sizeof(long double) <= sizeof(double))
        return QString::number(value, 'f', decimals);
    unsigned long long n = static_cast<unsigned long long>(
        std::floor(std::fabs(static_cast<long double>(value) * Scale[size_t(decimals)]) + 0.5L));
    std::array<char, 24> text{};
    char* begin = text.data() + text.size();
    for (int i = 0; i < decimals; ++i) {
        *--begin = char('0' + n % 10);
        n /= 10;
    }
    if (decimals > 0)
        *--begin = '.';
    do {
        *--begin = char('0' + n % 10);
        n /= 10;
    } while (n != 0);
    if (value < 0)
        *--begin = '-';
    return QString::fromLatin1(begin, int(text.data() + text.size() - begin));
}
