#pragma once

#include <QString>

#include <array>

// Numbers with a fixed count of decimals, as QString::number(value, 'f', decimals)
// writes them, character for character (halves rounded away from zero on the exact
// value, no sign on a negative zero). The tables and labels write a few hundred of
// them every radar frame; up to three decimals this is three times quicker.
class FixedText
{
public:
    static QString number(double value, int decimals);
    // The same number written over a text, in place when the text is its own (not
    // shared) and large enough: a table refilled every frame keeps its cells' texts.
    static void write(double value, int decimals, QString* text);

private:
    // Writes the number at the end of `buffer`; returns where it starts, or null when
    // QString::number has to write it.
    static const char* format(double value, int decimals, std::array<char, 24>& buffer);
};
