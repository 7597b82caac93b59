#include "roadbuilder.h"

#include <QJsonDocument>
#include <QtMath>
#include <QtTest>

// The road geometry laid out from a road configuration.
class tst_RoadBuilder : public QObject
{
    Q_OBJECT

private slots:
    void signalBurstOrder();
    void emptyRoad();
    void straightRoad();
    void markTolerance_data();
    void markTolerance();
    void refusedCurvesLeaveNoTrace_data();
    void refusedCurvesLeaveNoTrace();
    void quarterCurves_data();
    void quarterCurves();
    void tangentAngleWraps();
    void partNumbering_data();
    void partNumbering();
    void borderClassificationAndRectangle();
    void originOffsetMovesEverythingButAngles();
    void brokenValuesKeepTheRoadBounded_data();
    void brokenValuesKeepTheRoadBounded();

private:
    struct Result
    {
        QStringList order;
        QRectF rect;
        QPointF origin;
        QPolygonF axis;
        QList<QPolygonF> laneBorders;
        QList<QPolygonF> roadBorders;
        QMap<int, QPolygonF> laneCentres;
        QMap<int, QPolygonF> distance;
        QMap<int, double> angles;
    };
    static Result build(const QJsonObject& config);
    static QJsonObject road(const char* json);
};

tst_RoadBuilder::Result tst_RoadBuilder::build(const QJsonObject& config)
{
    RoadBuilder builder;
    Result r;
    QObject ctx;
    connect(&builder, &RoadBuilder::applyingRoadStarted, &ctx, [&](QRectF rect, QPointF origin) {
        r.order << "started";
        r.rect = rect;
        r.origin = origin;
    });
    connect(&builder, &RoadBuilder::roadAxisLine, &ctx, [&](QPolygonF l) {
        r.order << "axis";
        r.axis = l;
    });
    connect(&builder, &RoadBuilder::laneBorderLines, &ctx, [&](QList<QPolygonF> l) {
        r.order << "laneBorders";
        r.laneBorders = l;
    });
    connect(&builder, &RoadBuilder::roadBorderLines, &ctx, [&](QList<QPolygonF> l) {
        r.order << "roadBorders";
        r.roadBorders = l;
    });
    connect(&builder, &RoadBuilder::laneCenterLines, &ctx, [&](QMap<int, QPolygonF> l) {
        r.order << "laneCentres";
        r.laneCentres = l;
    });
    connect(&builder, &RoadBuilder::distanceLines, &ctx, [&](QMap<int, QPolygonF> l) {
        r.order << "distance";
        r.distance = l;
    });
    connect(&builder, &RoadBuilder::roadTanAngles, &ctx, [&](QMap<int, double> a) {
        r.order << "angles";
        r.angles = a;
    });
    connect(&builder, &RoadBuilder::applyingRoadFinished, &ctx, [&] { r.order << "finished"; });
    builder.setRoadConfig(config);
    return r;
}

QJsonObject tst_RoadBuilder::road(const char* json)
{
    const QJsonObject obj = QJsonDocument::fromJson(json).object();
    Q_ASSERT(!obj.isEmpty());
    return obj;
}

static bool near(const QPointF& a, const QPointF& b, double eps = 1e-6)
{
    return qAbs(a.x() - b.x()) < eps && qAbs(a.y() - b.y()) < eps;
}

#define QCOMPARE_POINT(actual, expected)                                                           \
    QVERIFY2(near(actual, expected), qPrintable(QString("(%1, %2) != (%3, %4)")                    \
                                                    .arg((actual).x())                             \
                                                    .arg((actual).y())                             \
                                                    .arg((expected).x())                           \
                                                    .arg((expected).y())))

void tst_RoadBuilder::signalBurstOrder()
{
    const Result r = build(QJsonObject());
    QCOMPARE(r.order, (QStringList{"started", "axis", "laneBorders", "roadBorders", "laneCentres",
                                   "distance", "angles", "finished"}));
}

void tst_RoadBuilder::emptyRoad()
{
    const Result r = build(road(R"({"origin_offset": 1.5})"));
    QCOMPARE(r.axis.size(), 5); // marks -2 .. 2: run-in and run-out only
    QCOMPARE_POINT(r.axis.first(), QPointF(-2, 1.5));
    QCOMPARE_POINT(r.axis.last(), QPointF(2, 1.5));
    QVERIFY(r.laneBorders.isEmpty());
    QVERIFY(r.roadBorders.isEmpty());
    QVERIFY(r.laneCentres.isEmpty());
    QCOMPARE(r.distance.keys(), (QList<int>{-2, -1, 0, 1, 2}));
    for (const QPolygonF& line : r.distance)
        QVERIFY(line.isEmpty());
    QVERIFY(r.angles.isEmpty());
    QCOMPARE(r.rect, QRectF(0, 1.5, 0, 0));
    QCOMPARE(r.origin, QPointF(0, 1.5));
}

void tst_RoadBuilder::straightRoad()
{
    const Result r = build(road(R"({"parts": {"1": {"width": 3.5, "is_lane": true},
                                             "-1": {"width": 3.5, "is_lane": true}},
                                   "sections": [{"length": 100}]})"));
    QCOMPARE(r.axis.size(), 105); // -2 .. 102
    QCOMPARE(r.distance.firstKey(), -2);
    QCOMPARE(r.distance.lastKey(), 102);
    for (int mark : {-2, -1, 101, 102})
        QVERIFY2(r.distance.value(mark).isEmpty(), qPrintable(QString::number(mark)));
    QCOMPARE(r.distance.value(50).size(), 2);
    QCOMPARE(r.roadBorders.size(), 2);
    for (const QPolygonF& line : r.roadBorders)
        QCOMPARE(line.size(), 101);
    QCOMPARE(r.laneCentres.keys(), (QList<int>{-1, 1}));
    QCOMPARE(r.laneCentres.value(1).size(), 101);
    QCOMPARE_POINT(r.laneCentres.value(1).at(30), QPointF(30, 1.75));
    QCOMPARE_POINT(r.laneCentres.value(-1).at(30), QPointF(30, -1.75));
    QCOMPARE(r.angles.size(), 101);
    QCOMPARE(r.rect, QRectF(0, -3.5, 100, 7));
}

void tst_RoadBuilder::markTolerance_data()
{
    QTest::addColumn<QString>("sections");
    QTest::addColumn<int>("firstRoadMark");
    QTest::addColumn<int>("lastRoadMark");

    QTest::newRow("10.004 m ends at mark 10") << R"([{"length": 10.004}])" << 0 << 10;
    QTest::newRow("9.98 m ends at mark 9") << R"([{"length": 9.98}])" << 0 << 9;
    QTest::newRow("10.005 then 5: the joint mark 10 belongs to both")
        << R"([{"length": 10.005}, {"length": 5}])" << 0 << 15;
    QTest::newRow("0.5 then 10: the second section starts past mark 0")
        << R"([{"length": 0.5}, {"length": 10}])" << 0 << 10;
    QTest::newRow("zero length lays mark 0 only") << R"([{"length": 0}])" << 0 << 0;
    QTest::newRow("zero length off the metre lays nothing")
        << R"([{"length": 0.5}, {"length": 0}])" << 0 << 0;
}

void tst_RoadBuilder::markTolerance()
{
    QFETCH(QString, sections);
    QFETCH(int, firstRoadMark);
    QFETCH(int, lastRoadMark);
    QJsonObject config = road(R"({"parts": {"1": {"width": 3}}})");
    config.insert("sections", QJsonDocument::fromJson(sections.toUtf8()).array());
    const Result r = build(config);
    QCOMPARE(r.angles.firstKey(), firstRoadMark);
    QCOMPARE(r.angles.lastKey(), lastRoadMark);
    QCOMPARE(r.angles.size(), lastRoadMark - firstRoadMark + 1);
}

void tst_RoadBuilder::refusedCurvesLeaveNoTrace_data()
{
    QTest::addColumn<QString>("curve");
    QTest::addColumn<bool>("refused");
    QTest::newRow("radius 9.99") << R"({"is_curved": true, "length": 20, "radius": 9.99})" << true;
    QTest::newRow("radius -9.99") << R"({"is_curved": true, "length": 20, "radius": -9.99})"
                                  << true;
    QTest::newRow("sweep 4 rad") << R"({"is_curved": true, "length": 400, "radius": 100})" << true;
    QTest::newRow("sweep 3.14 rad is taken")
        << R"({"is_curved": true, "length": 314, "radius": 100})" << false;
    QTest::newRow("a straight of 1e12 m is taken for a broken setting")
        << R"({"length": 1e12})" << true;
    QTest::newRow("an infinite length too") << R"({"length": 1e999})" << true;
    QTest::newRow("radius on a straight section is ignored")
        << R"({"length": 20, "radius": 5})" << false;
}

void tst_RoadBuilder::refusedCurvesLeaveNoTrace()
{
    QFETCH(QString, curve);
    QFETCH(bool, refused);
    QJsonObject config = road(R"({"parts": {"-1": {"width": 3, "is_lane": true}}})");
    QJsonArray sections{QJsonObject{{"length", 10}},
                        QJsonDocument::fromJson(curve.toUtf8()).object(),
                        QJsonObject{{"length", 10}}};
    config.insert("sections", sections);
    const Result r = build(config);
    if (refused) {
        // The road continues straight from mark 10 as if the curve were not there.
        QCOMPARE(r.angles.lastKey(), 20);
        QCOMPARE_POINT(r.axis.last(), QPointF(22, 0));
        QCOMPARE(r.angles.value(15), 0.0);
    } else {
        QVERIFY(r.angles.lastKey() > 20);
    }
}

void tst_RoadBuilder::quarterCurves_data()
{
    QTest::addColumn<double>("radius");
    QTest::addColumn<QPointF>("end");
    QTest::addColumn<double>("endAngle");
    QTest::newRow("left curve") << 100.0 << QPointF(100, 100) << M_PI / 2;
    QTest::newRow("right curve") << -100.0 << QPointF(100, -100) << -M_PI / 2;
}

void tst_RoadBuilder::quarterCurves()
{
    QFETCH(double, radius);
    QFETCH(QPointF, end);
    QFETCH(double, endAngle);
    QJsonObject config = road(R"({"parts": {"1": {"width": 4, "is_lane": true}}})");
    config.insert("sections",
                  QJsonArray{QJsonObject{
                      {"is_curved", true}, {"length", 100 * M_PI / 2}, {"radius", radius}}});
    const Result r = build(config);

    QCOMPARE(r.angles.lastKey(), 157); // 157.08 m: the last whole metre within 1 cm is 157
    // The run-out lays whole metres only: its last mark, 159, lies 1.92 m past the curve
    // along the end direction.
    const double past = 159 - 100 * M_PI / 2;
    QCOMPARE_POINT(r.axis.last(), end + past * QPointF(std::cos(endAngle), std::sin(endAngle)));
    // Angles climb (or fall) steadily from 0 to a quarter turn.
    double previous = 0;
    for (int mark = 1; mark <= 157; ++mark) {
        const double a = r.angles.value(mark);
        QVERIFY(radius > 0 ? a > previous : a < previous);
        previous = a;
    }
    QVERIFY(qAbs(r.angles.value(157) - endAngle) < 0.01);
    // The lane centre lies 2 m to the left of the axis throughout.
    const QPointF axis100 = r.axis.at(100 + 2);
    const double a100 = r.angles.value(100);
    QCOMPARE_POINT(r.laneCentres.value(1).at(100),
                   axis100 + QPointF(-2 * std::sin(a100), 2 * std::cos(a100)));
}

void tst_RoadBuilder::tangentAngleWraps()
{
    // Half a turn to the left, then another quarter: the direction passes +pi.
    QJsonObject config = road(R"({"parts": {"1": {"width": 3}},
        "sections": [{"is_curved": true, "length": 314.159, "radius": 100},
                     {"is_curved": true, "length": 157.08, "radius": 100}]})");
    const Result r = build(config);
    QVERIFY(r.angles.value(300) > 2.9);
    QVERIFY(r.angles.value(330) < -2.9); // just past pi, shown as just above -pi
    for (double a : r.angles)
        QVERIFY(a >= -M_PI && a <= M_PI);
    // Positions stay continuous across the wrap.
    for (int i = 1; i < r.axis.size(); ++i)
        QVERIFY(QLineF(r.axis.at(i - 1), r.axis.at(i)).length() < 1.01);
}

void tst_RoadBuilder::partNumbering_data()
{
    QTest::addColumn<QString>("parts");
    QTest::addColumn<QList<int>>("ids");
    QTest::addColumn<double>("minY"); // outer edge on the -Y side
    QTest::addColumn<double>("maxY"); // outer edge on the +Y side

    QTest::newRow("gap on one side is closed up")
        << R"({"1": {"width": 1}, "2": {"width": 1}, "3": {"width": 1},
               "-1": {"width": 2}, "-3": {"width": 2}})"
        << QList<int>{-3, -1, 0, 1, 2, 3} << -4.0 << 3.0;
    QTest::newRow("gap on both sides ends the cross-section")
        << R"({"1": {"width": 1}, "-1": {"width": 1}, "3": {"width": 5}})" << QList<int>{-1, 0, 1}
        << -1.0 << 1.0;
    QTest::newRow("median width splits evenly")
        << R"({"0": {"width": 2, "is_lane": true}, "1": {"width": 3}})" << QList<int>{0, 1} << 0.0
        << 4.0;
    QTest::newRow("empty part objects count as missing")
        << R"({"1": {}, "-1": {"width": 2}, "2": {"width": 1}})" << QList<int>{-1, 0, 2} << -2.0
        << 1.0;
    QTest::newRow("wrong types read as defaults")
        << R"({"1": {"width": "wide", "is_lane": 1}, "-1": {"width": 2}})" << QList<int>{-1, 0, 1}
        << -2.0 << 0.0;
}

void tst_RoadBuilder::partNumbering()
{
    QFETCH(QString, parts);
    QFETCH(QList<int>, ids);
    QFETCH(double, minY);
    QFETCH(double, maxY);

    QJsonObject config;
    config.insert("parts", QJsonDocument::fromJson(parts.toUtf8()).object());
    config.insert("sections", QJsonArray{QJsonObject{{"length", 10}}});
    RoadBuilder builder;
    QSignalSpy started(&builder, &RoadBuilder::applyingRoadStarted);
    builder.setRoadConfig(config);
    QCOMPARE(builder.parts().keys(), ids);
    const QRectF rect = started.first().at(0).toRectF();
    QCOMPARE(rect.top(), minY);
    QCOMPARE(rect.bottom(), maxY);
    QVERIFY(!builder.parts().value(0).isLane);
}

void tst_RoadBuilder::borderClassificationAndRectangle()
{
    const Result r = build(road(R"({"parts": {"0": {"width": 2},
        "1": {"width": 3.5, "is_lane": true}, "2": {"width": 3.5, "is_lane": true},
        "3": {"width": 2, "is_lane": false}}, "sections": [{"length": 20}]})"));
    // Road borders: the median's edge (part 1) and the inner edge of the outermost part.
    QCOMPARE(r.roadBorders.size(), 2);
    QCOMPARE(r.roadBorders.at(0).first().y(), 1.0);
    QCOMPARE(r.roadBorders.at(1).first().y(), 8.0);
    QCOMPARE(r.laneBorders.size(), 1);
    QCOMPARE(r.laneBorders.at(0).first().y(), 4.5);
    QCOMPARE(r.laneCentres.keys(), (QList<int>{1, 2}));
    QCOMPARE(r.laneCentres.value(1).first().y(), 2.75);
    QCOMPARE(r.laneCentres.value(2).first().y(), 6.25);
    QCOMPARE(r.rect, QRectF(0, 0, 20, 10));
    // A cross line holds the inner edges of parts 1, 2 and 3.
    QCOMPARE(r.distance.value(7),
             QPolygonF(QVector<QPointF>{QPointF(7, 1), QPointF(7, 4.5), QPointF(7, 8)}));
}

void tst_RoadBuilder::originOffsetMovesEverythingButAngles()
{
    const char* json = R"({"parts": {"1": {"width": 3, "is_lane": true}, "-1": {"width": 3}},
        "sections": [{"length": 30}, {"is_curved": true, "length": 50, "radius": -80}]})";
    QJsonObject shifted = road(json);
    shifted.insert("origin_offset", -7.5);
    const Result a = build(road(json));
    const Result b = build(shifted);
    QCOMPARE(b.origin, QPointF(0, -7.5));
    QCOMPARE(b.rect, a.rect.translated(0, -7.5));
    QCOMPARE(b.axis, a.axis.translated(0, -7.5));
    QCOMPARE(b.laneCentres.value(1), a.laneCentres.value(1).translated(0, -7.5));
    QCOMPARE(b.distance.value(40), a.distance.value(40).translated(0, -7.5));
    QCOMPARE(b.angles, a.angles);
}

QTEST_APPLESS_MAIN(tst_RoadBuilder)
#include "tst_roadbuilder.moc"

void tst_RoadBuilder::brokenValuesKeepTheRoadBounded_data()
{
    // Hand-edited settings: a value no road has must not blow the layout up (a lane
    // 1e308 m wide once made the start-up crash or lay tens of millions of lines).
    QTest::addColumn<QString>("config");
    QTest::addColumn<QRectF>("rect");
    QTest::addColumn<int>("lastMark");

    const QString lane3 = R"("1": {"width": 3})";
    const QString straight50 = R"("sections": [{"length": 50}])";
    QTest::newRow("a lane 1e308 m wide counts as one without a width")
        << R"({"parts": {"1": {"width": 1e308, "is_lane": true}, "2": {"width": 3}}, )" + straight50
               + "}"
        << QRectF(0, 0, 50, 3) << 50;
    QTest::newRow("a median 1e300 m wide likewise")
        << R"({"parts": {"0": {"width": 1e300}, )" + lane3 + "}, " + straight50 + "}"
        << QRectF(0, 0, 50, 3) << 50;
    QTest::newRow("a negative width still turns the part over")
        << R"({"parts": {"1": {"width": -3}}, )" + straight50 + "}" << QRectF(0, -3, 50, 3) << 50;
    QTest::newRow("an origin offset of 1e300 counts as none")
        << R"({"origin_offset": 1e300, "parts": {)" + lane3 + "}, " + straight50 + "}"
        << QRectF(0, 0, 50, 3) << 50;
    QTest::newRow("a section beyond 10 km of road is skipped, later ones are laid")
        << R"({"parts": {)" + lane3
               + R"(}, "sections": [{"length": 9000}, {"length": 2000}, {"length": 500}]})"
        << QRectF(0, 0, 9500, 3) << 9500;
    QTest::newRow("a road doubling back counts both ways")
        << R"({"parts": {)" + lane3
               + R"(}, "sections": [{"length": 6000}, {"length": -6000}, {"length": 100}]})"
        << QRectF(0, 0, 6100, 3) << 6100;
    QTest::newRow("a curve of radius 1e300 is laid straight")
        << R"({"parts": {)" + lane3
               + R"(}, "sections": [{"is_curved": true, "length": 100, "radius": 1e300}]})"
        << QRectF(0, 0, 100, 3) << 100;
    QString manyParts;
    for (int n = 1; n <= 25; ++n)
        manyParts += QString(R"("%1": {"width": 1}, )").arg(n);
    QTest::newRow("parts past the twentieth on a side are ignored")
        << R"({"parts": {)" + manyParts + R"("0": {}}, )" + straight50 + "}" << QRectF(0, 0, 50, 20)
        << 50;
}

void tst_RoadBuilder::brokenValuesKeepTheRoadBounded()
{
    QFETCH(QString, config);
    QFETCH(QRectF, rect);
    QFETCH(int, lastMark);
    const QJsonDocument document = QJsonDocument::fromJson(config.toUtf8());
    QVERIFY2(document.isObject(), qPrintable(config));
    const Result r = build(document.object());
    QCOMPARE(r.rect, rect);
    QCOMPARE(r.angles.lastKey(), lastMark);
}
