#include "fixedtext.h"

#include <array>
#include <cmath>

const char* FixedText::format(double value, int decimals, std::array<char, 24>& buffer)
{
    // The value times 10^decimals is exact in the 64-bit mantissa of a long double
    // (53 bits and at most 10 more), so rounding it rounds the exact value.
    static constexpr std::array<long double, 4> Scale{1.0L, 10.0L, 100.0L, 1000.0L};
    if (decimals < 0 || decimals >= int(Scale.size()) || !std::isfinite(value)
        || std::fabs(value) >= 1e15 || sizeof(long double) <= sizeof(double))
        return nullptr;
    unsigned long long n = static_cast<unsigned long long>(
        std::floor(std::fabs(static_cast<long double>(value) * Scale[size_t(decimals)]) + 0.5L));
    char* begin = buffer.data() + buffer.size();
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
    return begin;
}

QString FixedText::number(double value, int decimals)
{
    std::array<char, 24> buffer;
    const char* begin = format(value, decimals, buffer);
    if (!begin)
        return QString::number(value, 'f', decimals);
    return QString::fromLatin1(begin, int(buffer.data() + buffer.size() - begin));
}

void FixedText::write(double value, int decimals, QString* text)
{
    std::array<char, 24> buffer;
    const char* begin = format(value, decimals, buffer);
    if (!begin) {
        *text = QString::number(value, 'f', decimals);
        return;
    }
    const int length = int(buffer.data() + buffer.size() - begin);
    text->resize(length); // detaches a shared text; keeps an own one's storage
    QChar* out = text->data();
    for (int i = 0; i < length; ++i)
        out[i] = QLatin1Char(begin[i]);
}
