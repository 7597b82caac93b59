#include "opaquecover.h"

#include <algorithm>

namespace {
// The bits from `first` to `last` of a word (0 to 63, first <= last).
inline quint64 span(int first, int last)
{
    const quint64 upTo = last == 63 ? ~quint64(0) : (quint64(1) << (last + 1)) - 1;
    return upTo & ~((quint64(1) << first) - 1);
}
} // namespace

void OpaqueCover::reset(const QSize& size)
{
    m_view = QRect(QPoint(0, 0), size.expandedTo(QSize(0, 0)));
    m_words = (m_view.width() + WordBits - 1) / WordBits;
    m_bits.assign(size_t(m_words) * size_t(m_view.height()), 0);
}

QRect OpaqueCover::uncovered(const QRect& box) const
{
    const QRect area = box & m_view;
    if (area.isEmpty())
        return QRect();
    const int firstWord = area.left() / WordBits;
    const int lastWord = area.right() / WordBits;
    int left = area.right() + 1, right = area.left() - 1, top = -1, bottom = -1;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        const quint64* row = m_bits.data() + size_t(y) * size_t(m_words);
        bool open = false;
        for (int w = firstWord; w <= lastWord; ++w) {
            const int from = w == firstWord ? area.left() % WordBits : 0;
            const int to = w == lastWord ? area.right() % WordBits : WordBits - 1;
            const quint64 free = ~row[w] & span(from, to);
            if (!free)
                continue;
            open = true;
            left = std::min(left, w * WordBits + __builtin_ctzll(free));
            right = std::max(right, w * WordBits + WordBits - 1 - __builtin_clzll(free));
        }
        if (open) {
            if (top < 0)
                top = y;
            bottom = y;
        }
    }
    return top < 0 ? QRect() : QRect(QPoint(left, top), QPoint(right, bottom));
}

void OpaqueCover::cover(const QRect& box)
{
    const QRect area = box & m_view;
    if (area.isEmpty())
        return;
    const int firstWord = area.left() / WordBits;
    const int lastWord = area.right() / WordBits;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        quint64* row = m_bits.data() + size_t(y) * size_t(m_words);
        for (int w = firstWord; w <= lastWord; ++w) {
            const int from = w == firstWord ? area.left() % WordBits : 0;
            const int to = w == lastWord ? area.right() % WordBits : WordBits - 1;
            row[w] |= span(from, to);
        }
    }
}
