#pragma once

#include "localtimeofday.h"

#include <QtGlobal>

#include <vector>

// The rows of the objects history in a compact form: the measured values as the radar
// gave them, formatted only when a row is shown or saved. Rows live in short chunks, so
// that a row can be inserted in the middle of a full history (under the previous row of
// its object) or the oldest rows dropped without moving the whole history.
class HistoryRowStore
{
public:
    static constexpr qint32 NoTime = LocalTimeOfDay::NoTime;

    struct Row
    {
        double xSpeed = 0.0; // m/s
        double ySpeed = 0.0; // m/s
        double xRange = 0.0; // m
        double yRange = 0.0; // m
        double length = 0.0; // m
        qint32 timeOfDayMs = NoTime; // local time of the update, milliseconds since midnight
        quint8 id = 0;
        quint8 colorIndex = 0; // the id cell's colour pair, fixed when the row is taken
        // Equal rows read the same in every cell and have the same colours.
        bool operator==(const Row& other) const
        {
            return xSpeed == other.xSpeed && ySpeed == other.ySpeed && xRange == other.xRange
                   && yRange == other.yRange && length == other.length
                   && timeOfDayMs == other.timeOfDayMs && id == other.id
                   && colorIndex == other.colorIndex;
        }
    };

    int size() const { return m_size; }
    const Row& at(int row) const;
    // Inserts before the row at this position; a position equal to the size appends.
    void insert(int row, const Row& value);
    void removeFirst(int count);
    void clear();

    template<typename F> void forEach(F f) const
    {
        for (const std::vector<Row>& chunk : m_chunks)
            for (const Row& row : chunk)
                f(row);
    }

private:
    // Small enough that an insertion moves a few kilobytes (each of a frame's 64 new rows
    // lands in another chunk, most of them long out of the cache), large enough that the
    // chunk index of a full history (about a thousand chunks) stays short.
    static constexpr int ChunkCapacity = 128;

    // The chunk that holds the row, or, for a position just past a chunk's end, that
    // chunk (an insertion there extends it).
    size_t chunkFor(int row) const;

    std::vector<std::vector<Row>> m_chunks;
    std::vector<int> m_chunkStarts; // the position of each chunk's first row
    int m_size = 0;
};
