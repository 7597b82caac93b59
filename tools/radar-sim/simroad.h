#pragma once

#include <QJsonObject>
#include <QMap>
#include <QPolygonF>
#include <QString>

// The road the simulated vehicles drive on, in the application's road configuration
// format.
class SimRoad
{
public:
    // A straight 300 m road: two lanes each way, a 3 m median strip, 2.5 m roadsides.
    static QJsonObject defaultConfig();
    // Reads a road configuration object from a JSON file: either the object itself or
    // the application's settings file, whose current work profile holds it.
    static bool load(const QString& path, QJsonObject& config, QString& error);
    // Lane part number -> lane centre line, one point per metre.
    static QMap<int, QPolygonF> laneCentres(const QJsonObject& config);
};
