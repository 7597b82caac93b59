#pragma once

#include "iorvexserialconnectionclient.h"

// Protocol variant 1: the radar model that places the serial protocol on these CAN ids.
class OrvexSerialPakorProtocolClient final : public IOrvexSerialConnectionClient
{
    Q_OBJECT

public:
    static constexpr quint16 SynchronizationCanId = 0x2FF;
    static constexpr quint16 SensorControlCanId = 0x500;
    static constexpr quint16 ObjectControlCanId = 0x501;
    static constexpr quint16 RoadObjectCanIdMin = 0x510;
    static constexpr quint16 RoadObjectCanIdMax = 0x54F;
    static constexpr quint16 UdtResponseCanId = 0x400;
    static constexpr quint16 RadarSetupCanId = 0x3A0;
    static constexpr quint16 CommandCanId = 0x3F2;
    static constexpr quint16 AckMessageCanId = 0x3F0;

    explicit OrvexSerialPakorProtocolClient(QObject* parent = nullptr);
    ~OrvexSerialPakorProtocolClient() override;

    quint16 synchronizationCanId() const override { return SynchronizationCanId; }
    quint16 sensorControlCanId() const override { return SensorControlCanId; }
    quint16 objectControlCanId() const override { return ObjectControlCanId; }
    quint16 roadObjectCanIdMin() const override { return RoadObjectCanIdMin; }
    quint16 roadObjectCanIdMax() const override { return RoadObjectCanIdMax; }
    quint16 udtResponseCanId() const override { return UdtResponseCanId; }
    quint16 radarSetupCanId() const override { return RadarSetupCanId; }
    quint16 commandCanId() const override { return CommandCanId; }
    const QList<quint16>& ackMessageCanIds() const override;
};
