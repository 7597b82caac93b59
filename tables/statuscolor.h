#pragma once

#include <QColor>

// The three colours of the status labels.
namespace StatusColor {
constexpr QRgb Pending = qRgb(191, 0, 191); // in progress
constexpr QRgb Good = qRgb(0, 191, 0); // working
constexpr QRgb Bad = qRgb(191, 0, 0); // failed or absent
} // namespace StatusColor
