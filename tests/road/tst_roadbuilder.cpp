#include "roadbuilder.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QtMath>
#include <QtTest>

// The road geometry laid out from a road configuration.
class tst_RoadBuilder : public QObject
{
    Q_OBJECT

private slots:
    void crossSection_data();
    void crossSection();
    void marks_data();
    void marks();
    void curves_data();
    void curves();
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
        QList<int> parts;
    };
    static Result build(const QJsonObject& config);
};

// Records one signal of the burst: its place in the order and its value.
template<typename T>
static void record(RoadBuilder& builder, void (RoadBuilder::*signal)(const T&), const char* name,
                   QStringList& order, T& value)
{
    QObject::connect(&builder, signal, &builder, [name, &order, &value](const T& v) {
        order << name;
        value = v;
    });
}

tst_RoadBuilder::Result tst_RoadBuilder::build(const QJsonObject& config)
{
    RoadBuilder b;
    Result r;
    connect(&b, &RoadBuilder::applyingRoadStarted, &b, [&r](QRectF rect, QPointF origin) {
        r.order << "started";
        r.rect = rect;
        r.origin = origin;
    });
    record(b, &RoadBuilder::roadAxisLine, "axis", r.order, r.axis);
    record(b, &RoadBuilder::laneBorderLines, "laneBorders", r.order, r.laneBorders);
    record(b, &RoadBuilder::roadBorderLines, "roadBorders", r.order, r.roadBorders);
    record(b, &RoadBuilder::laneCenterLines, "laneCentres", r.order, r.laneCentres);
    record(b, &RoadBuilder::distanceLines, "distance", r.order, r.distance);
    record(b, &RoadBuilder::roadTanAngles, "angles", r.order, r.angles);
    connect(&b, &RoadBuilder::applyingRoadFinished, &b, [&r] { r.order << "finished"; });
    b.setRoadConfig(config);
    r.parts = b.parts().keys();
    return r;
}

static QJsonObject object(const char* json)
{
    return QJsonDocument::fromJson(json).object();
}

static QJsonArray array(const char* json)
{
    return QJsonDocument::fromJson(json).array();
}

static QJsonObject road(const char* parts,
                        const QJsonArray& sections = array(R"([{"length": 10}])"))
{
    return {{"parts", object(parts)}, {"sections", sections}};
}

static QList<double> firstY(const QList<QPolygonF>& lines)
{
    QList<double> ys;
    for (const QPolygonF& line : lines)
        ys << line.first().y();
    return ys;
}

void tst_RoadBuilder::crossSection_data()
{
    QTest::addColumn<QJsonObject>("config");
    QTest::addColumn<QList<int>>("parts");
    QTest::addColumn<QRectF>("rect");
    QTest::addColumn<QList<double>>("roadBorders"); // Y of each line, by part number
    QTest::addColumn<QList<double>>("laneBorders");
    QTest::addColumn<QList<double>>("laneCentres");

    QTest::newRow("no road: run-in and run-out only")
        << QJsonObject() << QList<int>{0} << QRectF() << QList<double>{} << QList<double>{}
        << QList<double>{};
    QTest::newRow("two lanes meeting on the axis")
        << road(R"({"1": {"width": 3.5, "is_lane": true}, "-1": {"width": 3.5, "is_lane": true}})",
                array(R"([{"length": 100}])"))
        << QList<int>{-1, 0, 1} << QRectF(0, -3.5, 100, 7) << QList<double>{0, 0} << QList<double>{}
        << QList<double>{-1.75, 1.75};
    // The whole road moved by the origin offset.
    QJsonObject shifted = road(R"({"0": {"width": 2, "is_lane": true}, "1": {"width": 3.5,
        "is_lane": true}, "2": {"width": 3.5, "is_lane": true}, "3": {"width": 2}})",
                               array(R"([{"length": 20}])"));
    shifted.insert("origin_offset", -7.5);
    QTest::newRow("median, two lanes and a roadside on the left, moved aside")
        << shifted << QList<int>{0, 1, 2, 3} << QRectF(0, -7.5, 20, 10) << QList<double>{-6.5, 0.5}
        << QList<double>{-3} << QList<double>{-4.75, -1.25};
    QTest::newRow("lanes on the right only")
        << road(R"({"-1": {"width": 3, "is_lane": true}, "-2": {"width": 3, "is_lane": true},
                    "-3": {"width": 2}})")
        << QList<int>{-3, -2, -1, 0} << QRectF(0, -8, 10, 8) << QList<double>{-6, 0}
        << QList<double>{-3} << QList<double>{-4.5, -1.5};
    QTest::newRow("a part missing or empty on one side only is passed over")
        << road(R"({"1": {"width": 1}, "2": {}, "3": {"width": 1}, "-1": {"width": 2},
                    "-2": {"width": 2}})")
        << QList<int>{-2, -1, 0, 1, 3} << QRectF(0, -4, 10, 6) << QList<double>{-2, 0, 0, 1}
        << QList<double>{} << QList<double>{};
    QTest::newRow("a gap on both sides ends the cross-section")
        << road(R"({"1": {"width": 1}, "-1": {"width": 1}, "3": {"width": 5}})")
        << QList<int>{-1, 0, 1} << QRectF(0, -1, 10, 2) << QList<double>{0, 0} << QList<double>{}
        << QList<double>{};
    QTest::newRow("wrong types read as defaults")
        << road(R"({"1": {"width": "wide", "is_lane": 1}, "-1": {"width": 2}})")
        << QList<int>{-1, 0, 1} << QRectF(0, -2, 10, 2) << QList<double>{0, 0} << QList<double>{}
        << QList<double>{};
}

void tst_RoadBuilder::crossSection()
{
    QFETCH(QJsonObject, config);
    QFETCH(QList<int>, parts);
    QFETCH(QRectF, rect);
    QFETCH(QList<double>, roadBorders);
    QFETCH(QList<double>, laneBorders);
    QFETCH(QList<double>, laneCentres);

    const Result r = build(config);
    QCOMPARE(r.order, (QStringList{"started", "axis", "laneBorders", "roadBorders", "laneCentres",
                                   "distance", "angles", "finished"}));
    QCOMPARE(r.parts, parts);
    QCOMPARE(r.rect, rect);
    QCOMPARE(firstY(r.roadBorders), roadBorders);
    QCOMPARE(firstY(r.laneBorders), laneBorders);
    QCOMPARE(firstY(r.laneCentres.values()), laneCentres);
    // The axis and a cross line at every whole metre from 2 m before the road to 2 m past
    // it; only the road's own marks carry a direction and the edges of its parts.
    const int end = int(rect.right());
    QCOMPARE(r.distance.firstKey(), -2);
    QCOMPARE(r.distance.lastKey(), end + 2);
    QCOMPARE(r.axis.size(), r.distance.size());
    const double offset = config.value("origin_offset").toDouble();
    QCOMPARE(r.origin, QPointF(0, offset));
    QCOMPARE(r.axis.last(), QPointF(end + 2, offset));
    QCOMPARE(r.angles.size(), rect.isNull() ? 0 : end + 1);
    QList<double> edges = roadBorders + laneBorders;
    std::sort(edges.begin(), edges.end());
    for (auto it = r.distance.cbegin(); it != r.distance.cend(); ++it) {
        const QPolygonF& cross = *it;
        QCOMPARE(cross.size(), r.angles.contains(it.key()) ? edges.size() : 0);
        for (int i = 0; i < cross.size(); ++i)
            QCOMPARE(cross.at(i), QPointF(it.key(), edges.at(i)));
    }
    for (const QPolygonF& line : r.roadBorders + r.laneBorders + r.laneCentres.values())
        QCOMPARE(line.size(), r.angles.size());
}

void tst_RoadBuilder::marks_data()
{
    QTest::addColumn<QJsonArray>("sections");
    QTest::addColumn<int>("lastRoadMark"); // the road's marks run from 0 to here
    QTest::addColumn<bool>("straight"); // the road stays on the X axis

    // A whole metre within 1 cm of a section still belongs to it.
    QTest::newRow("10.004 m ends at mark 10") << array(R"([{"length": 10.004}])") << 10 << true;
    QTest::newRow("9.995 m still reaches mark 10") << array(R"([{"length": 9.995}])") << 10 << true;
    QTest::newRow("9.98 m ends at mark 9") << array(R"([{"length": 9.98}])") << 9 << true;
    QTest::newRow("10.005 then 5: the joint mark 10 belongs to both")
        << array(R"([{"length": 10.005}, {"length": 5}])") << 15 << true;
    QTest::newRow("0.5 then 10: the second section starts past mark 0")
        << array(R"([{"length": 0.5}, {"length": 10}])") << 10 << true;
    QTest::newRow("zero length lays mark 0 only") << array(R"([{"length": 0}])") << 0 << true;
    QTest::newRow("zero length off the metre lays nothing")
        << array(R"([{"length": 0.5}, {"length": 0}])") << 0 << true;
    // A refused section leaves no trace: the road goes on as if it were not there.
    auto between = [](const QJsonValue& section) {
        return QJsonArray{QJsonObject{{"length", 10}}, section, QJsonObject{{"length", 10}}};
    };
    QTest::newRow("radius 9.99 refused")
        << between(object(R"({"is_curved": true, "length": 20, "radius": 9.99})")) << 20 << true;
    QTest::newRow("sweep of 4 rad refused")
        << between(object(R"({"is_curved": true, "length": 400, "radius": 100})")) << 20 << true;
    QTest::newRow("sweep of 3.14 rad taken")
        << between(object(R"({"is_curved": true, "length": 314, "radius": 100})")) << 334 << false;
    QTest::newRow("a straight of 1e12 m is taken for a broken setting")
        << between(object(R"({"length": 1e12})")) << 20 << true;
    QTest::newRow("an infinite length lays nothing")
        << between(QJsonObject{{"length", qInf()}}) << 20 << true;
    QTest::newRow("radius on a straight section ignored")
        << between(object(R"({"length": 20, "radius": 5})")) << 40 << true;
}

void tst_RoadBuilder::marks()
{
    QFETCH(QJsonArray, sections);
    QFETCH(int, lastRoadMark);
    QFETCH(bool, straight);
    const Result r = build(road(R"({"1": {"width": 3}})", sections));
    QCOMPARE(r.angles.firstKey(), 0);
    QCOMPARE(r.angles.lastKey(), lastRoadMark);
    QCOMPARE(r.angles.size(), lastRoadMark + 1);
    if (straight) {
        QCOMPARE(r.axis.last(), QPointF(lastRoadMark + 2, 0));
        QCOMPARE(r.angles.values(), QVector<double>(r.angles.size(), 0.0).toList());
    }
}

static bool near(const QPointF& a, const QPointF& b)
{
    return QLineF(a, b).length() < 1e-6;
}

void tst_RoadBuilder::curves_data()
{
    QTest::addColumn<double>("radius");
    QTest::addColumn<double>("length");
    QTest::addColumn<QPointF>("end"); // of the configured road
    QTest::addColumn<double>("endAngle");

    QTest::newRow("quarter turn left") << 100.0 << 50 * M_PI << QPointF(100, 100) << M_PI / 2;
    QTest::newRow("quarter turn right") << -100.0 << 50 * M_PI << QPointF(100, -100) << -M_PI / 2;
    // Half a turn, then another quarter: the direction passes pi and is shown wrapped.
    QTest::newRow("three quarters left, wrapped")
        << 100.0 << 150 * M_PI << QPointF(-100, 100) << -M_PI / 2;
}

void tst_RoadBuilder::curves()
{
    QFETCH(double, radius);
    QFETCH(double, length);
    QFETCH(QPointF, end);
    QFETCH(double, endAngle);
    // Two arcs of half the length: one arc turns half a circle at most.
    const QJsonObject arc{{"is_curved", true}, {"length", length / 2}, {"radius", radius}};
    const Result r = build(road(R"({"1": {"width": 4, "is_lane": true}})", {arc, arc}));
    const int last = int(length); // the last whole metre is within 1 cm of no end here
    QCOMPARE(r.angles.lastKey(), last);
    QVERIFY(qAbs(r.angles.value(last) - endAngle) < 0.01);
    // The run-out's last mark lies (last + 2 - length) m past the end, along its direction.
    const double past = last + 2 - length;
    QVERIFY(near(r.axis.last(), end + past * QPointF(std::cos(endAngle), std::sin(endAngle))));
    for (int mark = 0; mark <= last; ++mark) {
        const double a = r.angles.value(mark);
        QVERIFY(a >= -M_PI && a <= M_PI);
        // The axis stays continuous, the lane centre 2 m to its left throughout.
        const QPointF axis = r.axis.at(mark + 2);
        QVERIFY(QLineF(r.axis.at(mark + 1), axis).length() < 1.0 + 1e-9);
        QVERIFY(near(r.laneCentres.value(1).at(mark),
                     axis + QPointF(-2 * std::sin(a), 2 * std::cos(a))));
    }
}


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
    const QJsonDocument document = QJsonDocument::fromJson(config.toUtf8());
    QVERIFY2(document.isObject(), qPrintable(config));
    const Result r = build(document.object());
    QCOMPARE(r.rect, rect);
    QTEST(r.angles.lastKey(), "lastMark");
}

QTEST_APPLESS_MAIN(tst_RoadBuilder)
#include "tst_roadbuilder.moc"
