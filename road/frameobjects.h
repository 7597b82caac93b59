#pragma once

#include "roadobject.h"

#include <QVector>

#include <array>

// The objects of one radar frame, by id. The radar numbers its objects 0 to 255 and
// reports them in ascending id, each once a frame: they are kept in that order, with
// each id's place in a table, so that finding an object is a look-up rather than a
// search, and a new frame reuses the memory of the last one.
class FrameObjects
{
public:
    using const_iterator = QVector<RoadObject>::const_iterator;

    FrameObjects() { m_places.fill(NoPlace); }

    void clear();
    // Adds the object, or replaces the one with its id.
    void insert(const RoadObject& object);

    // The object with this id, or null.
    const RoadObject* find(quint8 id) const
    {
        const qint16 place = m_places[id];
        return place == NoPlace ? nullptr : m_objects.constData() + place;
    }
    bool contains(quint8 id) const { return m_places[id] != NoPlace; }
    int size() const { return m_objects.size(); }
    bool isEmpty() const { return m_objects.isEmpty(); }

    // In ascending id.
    const_iterator begin() const { return m_objects.cbegin(); }
    const_iterator end() const { return m_objects.cend(); }

private:
    static constexpr qint16 NoPlace = -1;

    QVector<RoadObject> m_objects;
    std::array<qint16, 256> m_places;
};
