#pragma once

#include "radarframeencoder.h"

#include <QHash>
#include <QtGlobal>

// The radar's settings: every parameter by group and number, and its mounting
// position. What is written reads back; a restart brings back what was last saved to
// flash.
class SimParameterStore
{
public:
    SimParameterStore();

    bool contains(quint8 groupNo, quint8 paramNo) const;
    qint32 value(quint8 groupNo, quint8 paramNo, qint32 fallback = 0) const;
    void setValue(quint8 groupNo, quint8 paramNo, qint32 value);

    const RadarFrameEncoder::Position& position() const { return m_position; }
    RadarFrameEncoder::Position& position() { return m_position; }

    void saveToFlash();
    void restoreFromFlash();

private:
    static quint16 key(quint8 groupNo, quint8 paramNo) { return quint16(groupNo << 8 | paramNo); }

    QHash<quint16, qint32> m_values;
    RadarFrameEncoder::Position m_position;
    QHash<quint16, qint32> m_flashValues;
    RadarFrameEncoder::Position m_flashPosition;
};
