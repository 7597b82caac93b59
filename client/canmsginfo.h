#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QtGlobal>

// Link diagnostics for one CAN id: how many frames with it were accepted since the
// last reset, the last of them as it came on the wire and the time of its message.
struct CanMsgInfo
{
    quint64 count = 0;
    QByteArray serialized;
    QDateTime dateTime;
};
