#pragma once

#include <QJsonValue>

#include <cmath>

namespace RoadConfigValue {

// A number from a stored road configuration, which people edit by hand: absent, of
// another type or not finite, it is taken for the fallback.
inline double number(const QJsonValue& value, double fallback = 0.0)
{
    if (!value.isDouble() || !std::isfinite(value.toDouble()))
        return fallback;
    return value.toDouble();
}

} // namespace RoadConfigValue
