#pragma once

#include <QString>

// Numbers with a fixed count of decimals, as QString::number(value, 'f', decimals)
// writes them, character for character (halves rounded away from zero on the exact
// value, no sign on a negative zero). The tables and labels write a few hundred of
// them every radar frame; up to three decimals this is three times quicker.
class FixedText
{
public:
    static QString number(double value, int decimals);
};
