#include "simparameterstore.h"

#include "radarparamnumbering.h"

namespace {
using P = RadarParamNumbering;
constexpr double Scale = 1000000.0; // polygon speeds and coordinates in millionths
} // namespace

SimParameterStore::SimParameterStore()
{
    // Factory settings of a freshly installed radar.
    setValue(P::FrequencyGroup, P::FrequencyParam, 2);
    setValue(P::SensitivityGroup, P::SensitivityParam, 7);
    setValue(P::ImitatorGroup, 0, 0); // imitator off
    setValue(P::FakeTargetsGroup, P::FakeTargetsParam, 0); // demo objects off
    setValue(P::PolygonGroup, P::PolygonUsageParam, 0); // no limitation area in use

    // Limitation area 0: a rectangle 5-100 m ahead, 10 m either side, 1-100 m/s along
    // the road and up to 10 m/s across it.
    const double speeds[] = {1.0, 100.0, 0.0, 10.0};
    for (int p = 0; p < 4; ++p)
        setValue(P::PolygonGroup, quint8(P::polygonParamNo(P::PolygonSpeedParam(p), 0)),
                 qint32(speeds[p] * Scale));
    setValue(P::PolygonGroup, quint8(P::polygonParamNo(P::TreatVertexCount, 0)), 4);
    const double xs[] = {5, 100, 100, 5};
    const double ys[] = {-10, -10, 10, 10};
    for (int v = 0; v < 4; ++v) {
        setValue(P::PolygonPointGroup, quint8(P::polygonParamNo(P::PolygonPointParam(v), 0)),
                 qint32(xs[v] * Scale));
        setValue(P::PolygonPointGroup, quint8(P::polygonParamNo(P::PolygonPointParam(v + 8), 0)),
                 qint32(ys[v] * Scale));
    }

    // Calibration: idle, with the factory's last parameters.
    setValue(P::CalibrationGroup, P::CalibrationCommandParam, 0);
    setValue(P::CalibrationGroup, P::CalibrationStateParam, 0);
    for (quint8 k = 0; k < P::CalibrationParamCount; ++k) {
        setValue(P::CalibrationGroup, quint8(P::calibrationLastParamNo(k)), 100 + k);
        setValue(P::CalibrationGroup, quint8(P::calibrationCurrParamNo(k)), 100 + k);
    }

    // Mounted 6.5 m high on the right roadside, looking along the road, tilted down 3 degrees.
    m_position.height = 650;
    m_position.xOffset = 0;
    m_position.yOffset = -1200;
    m_position.azimuth = 0;
    m_position.altitude = 36000 - 300;
    m_position.roll = 0;
    saveToFlash();
}

bool SimParameterStore::contains(quint8 groupNo, quint8 paramNo) const
{
    return m_values.contains(key(groupNo, paramNo));
}

qint32 SimParameterStore::value(quint8 groupNo, quint8 paramNo, qint32 fallback) const
{
    return m_values.value(key(groupNo, paramNo), fallback);
}

void SimParameterStore::setValue(quint8 groupNo, quint8 paramNo, qint32 value)
{
    m_values.insert(key(groupNo, paramNo), value);
}

void SimParameterStore::saveToFlash()
{
    m_flashValues = m_values;
    m_flashPosition = m_position;
}

void SimParameterStore::restoreFromFlash()
{
    m_values = m_flashValues;
    m_position = m_flashPosition;
}
