#include "historyrowstore.h"

#include <algorithm>
#include <iterator>

const HistoryRowStore::Row& HistoryRowStore::at(int row) const
{
    Q_ASSERT(row >= 0 && row < m_size);
    const size_t chunk = chunkFor(row);
    return m_chunks[chunk][size_t(row - m_chunkStarts[chunk])];
}

size_t HistoryRowStore::chunkFor(int row) const
{
    // The last chunk that starts at or before the row.
    const auto after = std::upper_bound(m_chunkStarts.begin(), m_chunkStarts.end(), row);
    return size_t(std::max<std::ptrdiff_t>(0, std::distance(m_chunkStarts.begin(), after) - 1));
}

void HistoryRowStore::insert(int row, const Row& value)
{
    Q_ASSERT(row >= 0 && row <= m_size);
    if (m_chunks.empty()) {
        m_chunks.emplace_back();
        m_chunkStarts.push_back(0);
    }
    size_t chunk = chunkFor(row);
    // A position at a chunk boundary belongs to the earlier chunk, so appending under an
    // object's last row never lands in front of the next chunk's first row.
    if (chunk > 0 && row == m_chunkStarts[chunk])
        --chunk;
    std::vector<Row>& rows = m_chunks[chunk];
    rows.insert(rows.begin() + (row - m_chunkStarts[chunk]), value);
    ++m_size;
    for (size_t c = chunk + 1; c < m_chunkStarts.size(); ++c)
        ++m_chunkStarts[c];

    if (rows.size() >= size_t(ChunkCapacity)) {
        // A full chunk gives its second half to a new one.
        const size_t half = rows.size() / 2;
        std::vector<Row> tail(rows.begin() + std::ptrdiff_t(half), rows.end());
        rows.resize(half);
        rows.shrink_to_fit();
        const int tailStart = m_chunkStarts[chunk] + int(half);
        m_chunks.insert(m_chunks.begin() + std::ptrdiff_t(chunk + 1), std::move(tail));
        m_chunkStarts.insert(m_chunkStarts.begin() + std::ptrdiff_t(chunk + 1), tailStart);
    }
}

void HistoryRowStore::removeFirst(int count)
{
    count = std::clamp(count, 0, m_size);
    if (count == 0)
        return;
    size_t whole = 0;
    while (whole < m_chunks.size() && m_chunkStarts[whole] + int(m_chunks[whole].size()) <= count)
        ++whole;
    m_chunks.erase(m_chunks.begin(), m_chunks.begin() + std::ptrdiff_t(whole));
    m_chunkStarts.erase(m_chunkStarts.begin(), m_chunkStarts.begin() + std::ptrdiff_t(whole));
    if (!m_chunks.empty()) {
        std::vector<Row>& first = m_chunks.front();
        first.erase(first.begin(), first.begin() + (count - m_chunkStarts.front()));
    }
    for (int& start : m_chunkStarts)
        start = std::max(0, start - count);
    m_size -= count;
}

void HistoryRowStore::clear()
{
    m_chunks.clear();
    m_chunkStarts.clear();
    m_size = 0;
}
