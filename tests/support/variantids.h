#pragma once

#include "iorvexserialconnectionclient.h"

#include <QtGlobal>

#include <memory>

// The CAN ids of the two radar models, written out here as the radar documents them,
// so that tests check the client's tables instead of reusing them.
struct VariantIds
{
    quint16 sync, sensor, objectControl, objectMin, objectMax, udt, setup, command, ack;

    static const VariantIds& of(int variant);
    static std::unique_ptr<IOrvexSerialConnectionClient> makeClient(int variant);
};
