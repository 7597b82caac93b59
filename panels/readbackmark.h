#pragma once

#include <QCoreApplication>
#include <QVariant>

class QDoubleSpinBox;

// A value read back from the radar may lie outside the range its spin box offers (set
// by another program, or by this one before its ranges were what they are). The box
// can only show the nearest value it has; the mark says so, in the failure colour and
// in the box's tooltip with the radar's own value, until the value is next set.
class ReadBackMark
{
    Q_DECLARE_TR_FUNCTIONS(ReadBackMark)

public:
    // Puts the radar's value into the box and marks the box when it had to be clamped.
    // A value that is not a number leaves the box as it is.
    static void setValue(QDoubleSpinBox* spin, double value);
    static void clear(QDoubleSpinBox* spin);
    // The radar's value that the box could not show, or null when it is not marked.
    static QVariant reportedValue(const QDoubleSpinBox* spin);
};
