#include "radarparamnumbering.h"

#include <cmath>

namespace {

constexpr double ProtocolScale = 1000000.0;

template<typename ParamNo>
bool findPolygonParam(quint8 paramNo, int paramCount, ParamNo paramNoOf, quint8& polygon,
                      quint8& param)
{
    for (int p = 0; p < RadarParamNumbering::PolygonCount; ++p) {
        for (int k = 0; k < paramCount; ++k) {
            if ((paramNoOf(k, p) & 0xFF) == paramNo) {
                polygon = quint8(p);
                param = quint8(k);
                return true;
            }
        }
    }
    return false;
}

template<typename ParamNo>
bool findCalibrationParam(quint8 paramNo, ParamNo paramNoOf, quint8& param)
{
    for (int k = 0; k < RadarParamNumbering::CalibrationParamCount; ++k) {
        if ((paramNoOf(quint8(k)) & 0xFF) == paramNo) {
            param = quint8(k);
            return true;
        }
    }
    return false;
}

} // namespace

int RadarParamNumbering::polygonParamNo(PolygonTreatParam param, quint8 polygon)
{
    return int(param) * 16 + polygon + 2;
}

int RadarParamNumbering::polygonParamNo(PolygonSpeedParam param, quint8 polygon)
{
    return int(param) * 16 + polygon + 34;
}

int RadarParamNumbering::polygonParamNo(PolygonPointParam param, quint8 polygon)
{
    return polygon * 8 + int(param) + (int(param) >= 8 ? 120 : 0);
}

int RadarParamNumbering::fullPolygonCmdId(int base, quint8 polygon, quint8 param)
{
    return int(quint32(polygon) << 24 | quint32(param) << 16) + base;
}

int RadarParamNumbering::fullCalibrationCmdId(int base, quint8 param)
{
    return int(quint32(param) << 16) + base;
}

int RadarParamNumbering::fullDebugVariableCmdId(int base, quint8 param)
{
    return int(quint32(param) << 24) + base;
}

bool RadarParamNumbering::getPolygonTreatParam(quint8 paramNo, quint8& polygon, quint8& param)
{
    return findPolygonParam(
        paramNo, TreatParamCount,
        [](int k, int p) { return polygonParamNo(PolygonTreatParam(k), quint8(p)); }, polygon,
        param);
}

bool RadarParamNumbering::getPolygonSpeedParam(quint8 paramNo, quint8& polygon, quint8& param)
{
    return findPolygonParam(
        paramNo, SpeedParamCount,
        [](int k, int p) { return polygonParamNo(PolygonSpeedParam(k), quint8(p)); }, polygon,
        param);
}

bool RadarParamNumbering::getPolygonPointParam(quint8 paramNo, quint8& polygon, quint8& param)
{
    return findPolygonParam(
        paramNo, PointParamCount,
        [](int k, int p) { return polygonParamNo(PolygonPointParam(k), quint8(p)); }, polygon,
        param);
}

bool RadarParamNumbering::getCalibrationLastParam(quint8 paramNo, quint8& param)
{
    return findCalibrationParam(paramNo, &calibrationLastParamNo, param);
}

bool RadarParamNumbering::getCalibrationCurrParam(quint8 paramNo, quint8& param)
{
    return findCalibrationParam(paramNo, &calibrationCurrParamNo, param);
}

int RadarParamNumbering::doubleToProtocol(double value)
{
    // Halves are rounded away from zero, as the radar's firmware expects.
    return int(std::llround(value * ProtocolScale));
}

double RadarParamNumbering::protocolToDouble(int value)
{
    return value / ProtocolScale;
}
