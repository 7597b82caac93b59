#include "orvexserialpakorprotocolclient.h"

OrvexSerialPakorProtocolClient::OrvexSerialPakorProtocolClient(QObject* parent)
    : IOrvexSerialConnectionClient(parent)
{ }

OrvexSerialPakorProtocolClient::~OrvexSerialPakorProtocolClient() = default;

const QList<quint16>& OrvexSerialPakorProtocolClient::ackMessageCanIds() const
{
    static const QList<quint16> ids{AckMessageCanId};
    return ids;
}
