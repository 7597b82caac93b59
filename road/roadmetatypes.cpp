#include "roadmetatypes.h"

#include <QList>
#include <QMap>
#include <QMetaType>
#include <QPolygonF>
#include <QVector>

void RoadMetaTypes::registerAll()
{
    qRegisterMetaType<QList<QPolygonF>>();
    qRegisterMetaType<QMap<int, QPolygonF>>();
    qRegisterMetaType<QMap<int, double>>();
    qRegisterMetaType<QVector<quint8>>();
}
