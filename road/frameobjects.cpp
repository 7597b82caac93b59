#include "frameobjects.h"

#include <algorithm>

void FrameObjects::clear()
{
    for (const RoadObject& object : qAsConst(m_objects))
        m_places[object.id] = NoPlace;
    m_objects.clear(); // keeps its capacity for the next frame
}

void FrameObjects::insert(const RoadObject& object)
{
    const qint16 place = m_places[object.id];
    if (place != NoPlace) {
        m_objects[place] = object;
        return;
    }
    if (m_objects.isEmpty() || m_objects.constLast().id < object.id) {
        m_places[object.id] = qint16(m_objects.size());
        m_objects.append(object);
        return;
    }
    // Out of the radar's order: in its place, the later ones move up by one.
    const auto at = std::lower_bound(m_objects.cbegin(), m_objects.cend(), object.id,
                                     [](const RoadObject& o, quint8 id) { return o.id < id; });
    const int index = int(at - m_objects.cbegin());
    m_objects.insert(index, object);
    for (int i = index; i < m_objects.size(); ++i)
        m_places[m_objects.at(i).id] = qint16(i);
}
