#pragma once

#include <QRect>
#include <QSize>

#include <vector>

// The pixels of a view that opaque boxes drawn later will cover, to leave out what
// would only be painted over. Near the horizon the video overlay stacks dozens of
// speed labels on each other: only a sixth of their pixels stay in view.
class OpaqueCover
{
public:
    // Nothing covered, over a view of this size (from (0, 0)).
    void reset(const QSize& size);
    // The smallest box around the pixels of `box` within the view not covered yet
    // (empty when none is left).
    QRect uncovered(const QRect& box) const;
    // The box's pixels within the view are covered from now on.
    void cover(const QRect& box);

private:
    static constexpr int WordBits = 64;

    std::vector<quint64> m_bits; // a bit per pixel, row by row
    int m_words = 0; // per row
    QRect m_view;
};
