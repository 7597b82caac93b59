#include "orvexserialdunvelprotocolclient.h"

OrvexSerialDunvelProtocolClient::OrvexSerialDunvelProtocolClient(QObject* parent)
    : IOrvexSerialConnectionClient(parent)
{ }

OrvexSerialDunvelProtocolClient::~OrvexSerialDunvelProtocolClient() = default;

const QList<quint16>& OrvexSerialDunvelProtocolClient::ackMessageCanIds() const
{
    static const QList<quint16> ids{AckMessageCanId};
    return ids;
}
