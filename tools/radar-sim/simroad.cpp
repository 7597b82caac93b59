#include "simroad.h"

#include "roadbuilder.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

QJsonObject SimRoad::defaultConfig()
{
    const QJsonObject lane{{"width", 3.5}, {"is_lane", true}};
    const QJsonObject roadside{{"width", 2.5}, {"is_lane", false}};
    return QJsonObject{
        {"origin_offset", 0.0},
        {"parts", QJsonObject{{"0", QJsonObject{{"width", 3.0}, {"is_lane", false}}},
                              {"1", lane},
                              {"2", lane},
                              {"3", roadside},
                              {"-1", lane},
                              {"-2", lane},
                              {"-3", roadside}}},
        {"sections", QJsonArray{QJsonObject{{"is_curved", false}, {"length", 300.0}}}}};
}

bool SimRoad::load(const QString& path, QJsonObject& config, QString& error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        error = QStringLiteral("cannot read %1: %2").arg(path, file.errorString());
        return false;
    }
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &parseError);
    if (!document.isObject()) {
        error = QStringLiteral("%1 holds no JSON object: %2").arg(path, parseError.errorString());
        return false;
    }
    config = document.object();
    // A settings file of the application: take the road of its current work profile.
    if (config.contains(QStringLiteral("profiles"))) {
        const QJsonArray profiles = config.value(QStringLiteral("profiles")).toArray();
        const QJsonObject profile
            = profiles.at(config.value(QStringLiteral("current_id")).toInt()).toObject();
        config = profile.value(QStringLiteral("view"))
                     .toObject()
                     .value(QStringLiteral("traffic_scheme"))
                     .toObject()
                     .value(QStringLiteral("road_config"))
                     .toObject();
    }
    return true;
}

QMap<int, QPolygonF> SimRoad::laneCentres(const QJsonObject& config)
{
    RoadBuilder builder;
    QMap<int, QPolygonF> lanes;
    QObject::connect(&builder, &RoadBuilder::laneCenterLines,
                     [&lanes](const QMap<int, QPolygonF>& lines) { lanes = lines; });
    builder.setRoadConfig(config);
    return lanes;
}
