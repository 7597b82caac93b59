#include "tvmsconfig.h"

#include "tvmsconfigkeys.h"

#include <QJsonValue>

#include <algorithm>
#include <cmath>

namespace K = TvmsConfigKeys;

namespace {

double readNumber(const QJsonObject& config, QLatin1String key, double limit)
{
    const QJsonValue value = config.value(key);
    if (!value.isDouble())
        return 0.0;
    const double number = value.toDouble();
    if (!std::isfinite(number))
        return 0.0;
    return std::clamp(number, -limit, limit);
}

} // namespace

TvmsConfig TvmsConfig::fromJson(const QJsonObject& config)
{
    TvmsConfig c;
    c.xOffset = readNumber(config, K::XOffset, MaxOffset);
    c.yOffset = readNumber(config, K::YOffset, MaxOffset);
    c.zOffset = readNumber(config, K::ZOffset, MaxOffset);
    c.azimuthMisalignment = radians(readNumber(config, K::AzimuthMisalignment, MaxMisalignment));
    c.altitudeMisalignment = radians(readNumber(config, K::AltitudeMisalignment, MaxMisalignment));
    // A negative angle of view stays negative here and leaves the model invalid.
    c.halfHorizontalAngle = radians(readNumber(config, K::HorizontalViewAngle, MaxViewAngle)) / 2.0;
    const double delay = readNumber(config, K::VideoDelay, MaxVideoDelayMs);
    c.videoDelayMs = int(std::lround(std::max(0.0, delay)));
    return c;
}
