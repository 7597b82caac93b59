#pragma once

// The parts of the main window that the operator can show, hide or collapse. The
// numbers are also the keys of each control's state in a work profile.
enum OrvexControl : int {
    TrafficSchemeAreaControl = 0, // holds the traffic scheme and the imitator speed
    TrafficSchemeControl = 1,
    ObjectsTableControl = 2,
    ImitatorSpeedControl = 3,
    SendCommandsControl = 4,
    ConfigureLimitationsControl = 5,
    SetRadarPositionControl = 6,
    FineTuningControl = 7,
    SaveAndRestartControl = 8,
    GeneralInfoControl = 9,
    // 10 and 11 are kept in profiles but name no control.
    ObjectsHistoryControl = 12,
    ProjectionToVideoControl = 13,
};
