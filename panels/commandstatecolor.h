#pragma once

#include "statuscolor.h"

// Text colours of the command and parameter state labels: pending, good and bad as
// in the status displays, plus the two that only these labels show.
namespace CommandStateColor {
constexpr QRgb Queued = qRgb(0, 191, 191); // waiting behind other commands
constexpr QRgb InProgress = StatusColor::Pending; // on the wire, or waiting for data
constexpr QRgb Done = StatusColor::Good; // acknowledged, or the value arrived
constexpr QRgb Failed = StatusColor::Bad;
constexpr QRgb Changed = qRgb(0, 0, 127); // edited by the operator, not yet sent
} // namespace CommandStateColor
