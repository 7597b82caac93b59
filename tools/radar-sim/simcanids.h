#pragma once

#include "orvexserialdunvelprotocolclient.h"
#include "orvexserialpakorprotocolclient.h"

#include <QtGlobal>

// The CAN ids the simulated radar sends and listens on, for one protocol variant.
// The values are the client's own tables, so both sides always agree.
struct SimCanIds
{
    quint16 synchronization;
    quint16 sensorControl;
    quint16 objectControl;
    quint16 roadObjectMin;
    quint16 udtResponse;
    quint16 radarSetup;
    quint16 command;
    quint16 ack;

    template<typename Variant> static constexpr SimCanIds of()
    {
        return {Variant::SynchronizationCanId, Variant::SensorControlCanId,
                Variant::ObjectControlCanId,   Variant::RoadObjectCanIdMin,
                Variant::UdtResponseCanId,     Variant::RadarSetupCanId,
                Variant::CommandCanId,         Variant::AckMessageCanId};
    }

    static SimCanIds forVariant(int variant)
    {
        return variant == 1 ? of<OrvexSerialPakorProtocolClient>()
                            : of<OrvexSerialDunvelProtocolClient>();
    }
};
