#pragma once

#include <QtGlobal>

// How the radar numbers the parameters of its polygon, calibration and debug groups,
// and how the client folds a parameter's indices into its command id so that every
// single value has an id of its own in the command-state reports.
class RadarParamNumbering
{
public:
    // Parameter groups of the radar and the parameters it treats specially.
    static constexpr quint8 DeviceInfoGroup = 0, DeviceInfoParam = 40;
    static constexpr qint32 HardwareInfoSelector = 8192; // the value names the text wanted
    static constexpr qint32 FirmwareInfoSelector = 128;
    static constexpr quint8 FakeTargetsGroup = 0, FakeTargetsParam = 68;
    static constexpr quint8 PositionReadGroup = 0, PositionReadParam = 42;
    static constexpr qint32 PositionReadSelector = 2;
    static constexpr quint8 FrequencyGroup = 65, FrequencyParam = 36;
    static constexpr quint8 PolygonGroup = 70; // usage, treat and speed parameters
    static constexpr quint8 PolygonUsageParam = 0, ReinitPolygonsParam = 1;
    static constexpr quint8 PolygonPointGroup = 71; // vertex coordinates
    static constexpr quint8 RestartGroup = 129;
    static constexpr quint8 SaveToFlashGroup = 136;
    static constexpr quint8 SensitivityGroup = 148, SensitivityParam = 4;
    static constexpr quint8 SelfDiagnosticsGroup = 150;
    static constexpr quint8 ImitatorGroup = 151;
    static constexpr quint8 CalibrationGroup = 254;
    static constexpr quint8 CalibrationCommandParam = 0, CalibrationStateParam = 1;
    static constexpr quint8 CalibrationApplyParam = 7; // value 0 resets, 1 applies
    static constexpr quint8 DebugVariableGroup = 255;

    static constexpr int PolygonCount = 8;

    enum PolygonTreatParam { TreatVertexCount = 0, TreatParam1 = 1, TreatParamCount = 2 };
    enum PolygonSpeedParam {
        SpeedXMin = 0,
        SpeedXMax = 1,
        SpeedYMin = 2,
        SpeedYMax = 3,
        SpeedParamCount = 4,
    };
    // Params 0 to 7 are the X coordinates of vertices 0 to 7, params 8 to 15 their Y.
    enum PolygonPointParam { PointX0 = 0, PointY0 = 8, PointParamCount = 16 };
    static constexpr int CalibrationParamCount = 5;

    static int polygonParamNo(PolygonTreatParam param, quint8 polygon);
    static int polygonParamNo(PolygonSpeedParam param, quint8 polygon);
    static int polygonParamNo(PolygonPointParam param, quint8 polygon);
    static int calibrationLastParamNo(quint8 param) { return param + 8; }
    static int calibrationCurrParamNo(quint8 param) { return param + 16; }

    static int fullPolygonCmdId(int base, quint8 polygon, quint8 param);
    static int fullCalibrationCmdId(int base, quint8 param);
    static int fullDebugVariableCmdId(int base, quint8 param);

    // Reverse mappings for routing read responses: the first (polygon, param) whose
    // number matches in its low 8 bits, polygons outer, params inner.
    static bool getPolygonTreatParam(quint8 paramNo, quint8& polygon, quint8& param);
    static bool getPolygonSpeedParam(quint8 paramNo, quint8& polygon, quint8& param);
    static bool getPolygonPointParam(quint8 paramNo, quint8& polygon, quint8& param);
    static bool getCalibrationLastParam(quint8 paramNo, quint8& param);
    static bool getCalibrationCurrParam(quint8 paramNo, quint8& param);

    // Polygon speeds and coordinates travel as millionths in a signed 32-bit value.
    static int doubleToProtocol(double value);
    static double protocolToDouble(int value);
};
