#include "glyphruntext.h"
#include "glyphtiles.h"
#include "imitatorobjectwidget.h"
#include "iorvexclient.h"
#include "roadbuilder.h"
#include "roadobjectswidget.h"

#include <QJsonDocument>
#include <QLabel>
#include <QPainter>
#include <QRawFont>
#include <QScreen>
#include <QtTest>

// The traffic scheme as a widget: the values written along the road and on the Y
// scale, tracks across rescales and frames, the picture a frame at a time, side labels
// in traffic, long exposure. The imitator's speed display beside it: the first object
// of a frame, or "no data".
class tst_RoadObjectsWidget : public QObject
{
    Q_OBJECT

private slots:
    void textsAreRegularAndInsideTheView_data();
    void textsAreRegularAndInsideTheView();
    void tracksSurviveARescale_data();
    void tracksSurviveARescale();
    void frameByFrameEqualsWholeDraw_data();
    void frameByFrameEqualsWholeDraw();
    void sideLabelsInTrafficDoNotOverlap();
    void longExposureStartsClean();
    void imitatorFrames_data();
    void imitatorFrames();
    void imitatorHiddenKeepsItsTextStoppedRadarEmpties();
    void glyphCopiesInAWindowAsDrawn();

private:
    // The demo road (four lanes, 300 m with a gentle left curve) in a shown widget.
    static void setDemoRoad(RoadObjectsWidget& scheme, const QSize& size, bool vertical = false);
    static void frame(RoadObjectsWidget& scheme, const QDateTime& time,
                      const QList<QPair<quint8, QPointF>>& objects, bool fresh = true);
    static void frame(ImitatorObjectWidget& widget, const QList<double>& speeds)
    {
        widget.startFilling();
        quint8 id = 0;
        for (double speed : speeds)
            widget.addObject(id++, speed, 0, 40, 0, 4.4, QDateTime::currentDateTimeUtc());
        widget.finishFilling();
    }
};

void tst_RoadObjectsWidget::setDemoRoad(RoadObjectsWidget& scheme, const QSize& size, bool vertical)
{
    static const char* road = R"({"parts": {"-3": {"width": 4}, "-2": {"width": 3.5,
        "is_lane": true}, "-1": {"width": 3.5, "is_lane": true}, "0": {"width": 3},
        "1": {"width": 3.5, "is_lane": true}, "2": {"width": 3.5, "is_lane": true},
        "3": {"width": 2.5}}, "sections": [{"length": 60},
        {"is_curved": true, "length": 140, "radius": 800}, {"length": 100}]})";
    RoadBuilder builder;
    using R = RoadObjectsWidget;
    QObject::connect(&builder, &RoadBuilder::applyingRoadStarted, &scheme, &R::startApplyingRoad);
    QObject::connect(&builder, &RoadBuilder::roadAxisLine, &scheme, &R::setRoadAxisLine);
    QObject::connect(&builder, &RoadBuilder::laneBorderLines, &scheme, &R::setLaneBorderLines);
    QObject::connect(&builder, &RoadBuilder::roadBorderLines, &scheme, &R::setRoadBorderLines);
    QObject::connect(&builder, &RoadBuilder::distanceLines, &scheme, &R::setDistanceLines);
    QObject::connect(&builder, &RoadBuilder::roadTanAngles, &scheme, &R::setRoadTanAngles);
    QObject::connect(&builder, &RoadBuilder::applyingRoadFinished, &scheme, &R::finishApplyingRoad);
    scheme.setDrawVertical(vertical);
    scheme.resize(size);
    scheme.show(); // a hidden widget hears of its size only when shown
    QVERIFY(QTest::qWaitForWindowExposed(&scheme));
    builder.setRoadConfig(QJsonDocument::fromJson(road).object());
}

void tst_RoadObjectsWidget::frame(RoadObjectsWidget& scheme, const QDateTime& time,
                                  const QList<QPair<quint8, QPointF>>& objects, bool fresh)
{
    scheme.startFilling();
    scheme.setFrameDateTimeUtc(time);
    QVector<quint8> order;
    for (const auto& [id, p] : objects) {
        scheme.addObject(id, 10, 0, p.x(), p.y(), 4.0, fresh ? time : time.addMSecs(-100));
        order.append(id);
    }
    scheme.finishFilling(order);
}

void tst_RoadObjectsWidget::textsAreRegularAndInsideTheView_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("vertical");
    QTest::addColumn<int>("scaleStep"); // 0: whatever the room allows
    QTest::addColumn<int>("distanceStep");

    QTest::newRow("wide: every 5 m and every 20 m") << QSize(1280, 420) << false << 5 << 20;
    QTest::newRow("a small window") << QSize(700, 190) << false << 0 << 0;
    QTest::newRow("tiny") << QSize(300, 80) << false << 0 << 0;
    QTest::newRow("vertical, tall") << QSize(300, 1000) << true << 0 << 20;
    QTest::newRow("vertical, narrow") << QSize(140, 500) << true << 0 << 0;
}

void tst_RoadObjectsWidget::textsAreRegularAndInsideTheView()
{
    QFETCH(QSize, size);
    QFETCH(bool, vertical);
    QFETCH(int, scaleStep);
    QFETCH(int, distanceStep);
    RoadObjectsWidget scheme;
    setDemoRoad(scheme, size, vertical);
    QVERIFY(scheme.isValid());
    scheme.grab(); // draws the road picture
    const SchemeRoadLayer& layer = scheme.roadLayer();
    const QRect view = scheme.rect();

    // Y scale: every multiple of the step in the view, the step a round number; the
    // distances: every multiple of theirs up to the road's far end at 300 m.
    const QRectF area = scheme.viewArea();
    const QList<int> roundScaleSteps{5, 10, 20, 50, 100};
    const QList<int> roundDistanceSteps{20, 40, 100, 200, 400};
    QVERIFY(roundScaleSteps.contains(layer.scaleTextStep()));
    QVERIFY(roundDistanceSteps.contains(layer.distanceTextStep()));
    if (scaleStep)
        QCOMPARE(layer.scaleTextStep(), scaleStep);
    if (distanceStep)
        QCOMPARE(layer.distanceTextStep(), distanceStep);
    QList<int> expectedScale;
    for (int y = int(std::ceil(area.top())); y <= int(std::floor(area.bottom())); ++y) {
        if (y % layer.scaleTextStep() == 0)
            expectedScale.append(y);
    }
    QList<int> expectedDistances;
    for (int d = layer.distanceTextStep(); d <= 300; d += layer.distanceTextStep())
        expectedDistances.append(d);

    for (const auto& [texts, expected] : {qMakePair(&layer.scaleTexts(), expectedScale),
                                          qMakePair(&layer.distanceTexts(), expectedDistances)}) {
        QList<int> values;
        for (int i = 0; i < texts->size(); ++i) {
            const QRect box = texts->at(i).box;
            values.append(texts->at(i).value);
            QVERIFY2(view.contains(box), qPrintable(QString::number(texts->at(i).value)));
            if (i > 0)
                QVERIFY(!box.intersects(texts->at(i - 1).box));
            // The whole number fits its box: nothing is cut.
            QVERIFY(box.width()
                    >= scheme.fontMetrics().horizontalAdvance(QString::number(values.last())));
        }
        QCOMPARE(values, expected);
    }
}

void tst_RoadObjectsWidget::tracksSurviveARescale_data()
{
    QTest::addColumn<int>("change");
    QTest::newRow("radar position shown") << 0;
    QTest::newRow("limitation point read") << 1;
    QTest::newRow("camera sight moved") << 2;
    QTest::newRow("window resized") << 3;
    QTest::newRow("drawn vertically") << 4;
    QTest::newRow("aspect ratio let go") << 5;
}

void tst_RoadObjectsWidget::tracksSurviveARescale()
{
    QFETCH(int, change);
    RoadObjectsWidget scheme;
    setDemoRoad(scheme, QSize(700, 300));
    const QDateTime t0(QDate(2026, 11, 21), QTime(12, 0), Qt::UTC);
    for (int f = 0; f < 3; ++f)
        frame(scheme, t0.addMSecs(100 * f), {{1, {10.0 + f, 2}}, {2, {50.0 - f, -3}}});
    // Object 2 missing from a frame: its track ends. Predictions add no point, nor
    // start a track.
    frame(scheme, t0.addMSecs(300), {{1, {13, 2}}});
    frame(scheme, t0.addMSecs(400), {{1, {14, 2}}, {2, {46, -3}}}, false);
    QCOMPARE(scheme.currentTrackCount(), 1);
    frame(scheme, t0.addMSecs(500), {{1, {15, 2}}, {2, {45, -3}}});
    frame(scheme, t0.addMSecs(600), {{1, {16, 2}}, {2, {44, -3}}});
    frame(scheme, t0.addMSecs(700), {{1, {17, 2}}, {2, {44, -3}}}, false);
    QCOMPARE(scheme.tracks().tracks()[1].size(), 6);
    QCOMPARE(scheme.tracks().tracks()[2].size(), 2);
    const QMap<quint8, QPolygon> before = scheme.tracks().screenTracks();
    QCOMPARE(before.size(), 2);

    switch (change) {
    case 0: scheme.showPosition(6, 2, -1, 5, -8, 0); break;
    case 1: scheme.showPolygonPointParam(0, 1, 120.0); break;
    case 2: scheme.setSight({0, 0}, {80, 1}, QPolygonF({{10, -5}, {90, -8}, {90, 8}})); break;
    case 3: scheme.resize(900, 400); break;
    case 4: scheme.setDrawVertical(true); break;
    case 5: scheme.setKeepAspectRatio(false); break;
    }
    QTRY_VERIFY(scheme.isValid());
    const QMap<quint8, QPolygon>& after = scheme.tracks().screenTracks();
    QCOMPARE(after.keys(), before.keys());
    for (quint8 id : after.keys()) {
        QCOMPARE(after[id].size(), scheme.tracks().tracks()[id].size());
        QCOMPARE(after[id].first(),
                 scheme.geometry().xyToScreen(scheme.tracks().tracks()[id].first()));
    }
}

void tst_RoadObjectsWidget::sideLabelsInTrafficDoNotOverlap()
{
    // Sixty small vehicles on four lanes of the demo road, bunched in places.
    RoadObjectsWidget scheme;
    setDemoRoad(scheme, QSize(1280, 420));
    const QDateTime t0(QDate(2026, 11, 21), QTime(12, 0), Qt::UTC);
    QList<QPair<quint8, QPointF>> objects;
    for (int i = 0; i < 60; ++i)
        objects.append({quint8(i), {5.0 + i * 4.5 + (i % 3) * 2.0, (i % 4 - 1.5) * 3.5}});
    frame(scheme, t0, objects);
    scheme.grab();
    const auto& labels = scheme.objectsLayer().labels();
    QCOMPARE(labels.size(), 60); // all too small to carry their id inside
    int moved = 0;
    for (int i = 0; i < labels.size(); ++i) {
        QVERIFY(!labels[i].shortened);
        QVERIFY(scheme.rect().contains(labels[i].box));
        moved += labels[i].moved ? 1 : 0;
        for (int j = 0; j < i; ++j)
            QVERIFY2(!labels[i].box.intersects(labels[j].box),
                     qPrintable(QString("%1 %2").arg(i).arg(j)));
    }
    QVERIFY(moved > 0);
}

void tst_RoadObjectsWidget::frameByFrameEqualsWholeDraw_data()
{
    QTest::addColumn<int>("frames");
    QTest::addColumn<double>("step"); // metres a frame
    QTest::addColumn<bool>("circling"); // round five places 6 m apart, again and again
    QTest::addColumn<int>("endsAt"); // the frame from which the second vehicle is gone

    QTest::newRow("tracks growing") << 60 << 0.7 << false << -1;
    QTest::newRow("a track ends") << 60 << 0.7 << false << 40;
    QTest::newRow("points back on earlier ones lose their marks") << 79 << 0.0 << true << -1;
    QTest::newRow("long tracks shortened")
        << SchemeTracks::MaxTrackPoints + 2 * SchemeTracks::TrackTrimPoints + 5 << 0.02 << false
        << -1;
}

void tst_RoadObjectsWidget::frameByFrameEqualsWholeDraw()
{
    // Painted after every frame, only the frame's new pieces are drawn and what it
    // took away is drawn anew: the picture must be the one drawn whole at once.
    QFETCH(int, frames);
    QFETCH(double, step);
    QFETCH(bool, circling);
    QFETCH(int, endsAt);
    RoadObjectsWidget scheme;
    scheme.setShowCurrentTracks(true);
    scheme.setPaintObjects(true);
    setDemoRoad(scheme, QSize(420, 160));
    const QDateTime t0(QDate(2026, 11, 21), QTime(12, 0), Qt::UTC);
    for (int f = 0; f < frames; ++f) {
        QList<QPair<quint8, QPointF>> objects;
        for (quint8 id = 1; id <= 3; ++id) {
            if (id == 2 && endsAt >= 0 && f >= endsAt)
                continue;
            // One vehicle per lane: the tracks never cross.
            const double x = 20.0 * id + step * f + (circling ? 6.0 * (f % 5) : 0.0);
            const double y = -5.25 + 3.5 * (id - 1);
            objects.append({id, QPointF(x, y)});
        }
        frame(scheme, t0.addMSecs(100 * f), objects);
        scheme.repaint();
    }
    const QImage frameByFrame = scheme.grab().toImage();
    scheme.setKeepAspectRatio(true); // the same scale: everything is drawn anew
    const QImage whole = scheme.grab().toImage();
    QCOMPARE(frameByFrame.size(), whole.size());
    int differing = 0;
    for (int y = 0; y < whole.height(); ++y) {
        for (int x = 0; x < whole.width(); ++x)
            differing += frameByFrame.pixel(x, y) != whole.pixel(x, y) ? 1 : 0;
    }
    QCOMPARE(differing, 0);
}

void tst_RoadObjectsWidget::longExposureStartsClean()
{
    auto yellowPixels = [](const QImage& image) {
        int count = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor c = image.pixelColor(x, y);
                count += c.red() > 0 && c.blue() == 0 && c.red() == c.green() ? 1 : 0;
            }
        }
        return count;
    };
    RoadObjectsWidget scheme;
    setDemoRoad(scheme, QSize(540, 208));
    const QDateTime t0(QDate(2026, 11, 21), QTime(12, 0), Qt::UTC);
    auto drive = [&](int frames) {
        for (int f = 0; f < frames; ++f) {
            frame(scheme, t0.addMSecs(100 * f), {{3, {5.0 + f, -3}}});
            scheme.repaint();
        }
    };

    scheme.setTracksDisplayMode(1);
    QVERIFY(!scheme.drawsObjects() && !scheme.drawsTracksLive() && scheme.drawsTracksOnBase());
    drive(40);
    const int exposed = yellowPixels(scheme.grab().toImage());
    QVERIFY(exposed > 50);

    // Statistical to mixed keeps the picture; objects come back on top.
    scheme.setTracksDisplayMode(2);
    QVERIFY(scheme.drawsObjects() && scheme.drawsTracksOnBase());
    scheme.repaint();
    QVERIFY(yellowPixels(scheme.grab().toImage()) > exposed / 2);

    // Back to normal and into statistical again: a clean road.
    scheme.setTracksDisplayMode(0);
    scheme.setTracksDisplayMode(1);
    frame(scheme, t0.addMSecs(5000), {}); // the track ends: nothing left to expose
    scheme.repaint();
    QCOMPARE(yellowPixels(scheme.grab().toImage()), 0);

    scheme.setTracksDisplayMode(7); // not a mode: nothing changes
    QCOMPARE(scheme.tracksDisplayMode(), 1);
}

void tst_RoadObjectsWidget::imitatorFrames_data()
{
    QTest::addColumn<bool>("twoLines");
    QTest::addColumn<QList<double>>("speeds");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QColor>("color");
    QTest::addColumn<int>("pointSize");

    const QColor black(0, 0, 0);
    const QColor red(191, 0, 0);
    QTest::newRow("the first of three objects")
        << false << QList<double>{-12.5, 25.0, 3.0} << "-45.0 <nobr>km/h</nobr>" << black << 144;
    QTest::newRow("two lines") << true << QList<double>{25.0} << "90.0<br><nobr>km/h</nobr>"
                               << black << 144;
    QTest::newRow("no objects") << false << QList<double>{} << "no data" << red << 96;
    QTest::newRow("no objects, two lines") << true << QList<double>{} << "no<br>data" << red << 96;
}

void tst_RoadObjectsWidget::imitatorFrames()
{
    QFETCH(bool, twoLines);
    QFETCH(QList<double>, speeds);
    QFETCH(QString, text);
    QFETCH(QColor, color);
    QFETCH(int, pointSize);

    ImitatorObjectWidget widget;
    widget.show();
    QVERIFY(QTest::qWaitForWindowExposed(&widget));
    widget.setTwoLines(twoLines);
    frame(widget, {1.0}); // a previous frame's text must go
    frame(widget, speeds);
    const QLabel* label = widget.findChild<QLabel*>("imitatorSpeedLabel");
    QCOMPARE(widget.text(), text);
    QCOMPARE(label->palette().color(QPalette::Active, QPalette::WindowText), color);
    QCOMPARE(label->font().pointSize(), pointSize);
    QVERIFY(widget.updatesEnabled());
}

void tst_RoadObjectsWidget::imitatorHiddenKeepsItsTextStoppedRadarEmpties()
{
    ImitatorObjectWidget widget;
    widget.show();
    QVERIFY(QTest::qWaitForWindowExposed(&widget));
    widget.showRadarState(IOrvexClient::Working);
    frame(widget, {10.0});
    widget.hide();
    frame(widget, {20.0});
    frame(widget, {});
    widget.show();
    QCOMPARE(widget.text(), QString("36.0 <nobr>km/h</nobr>"));
    QVERIFY(widget.isEnabled());
    widget.showRadarState(IOrvexClient::Busy);
    QCOMPARE(widget.text(), QString("no data"));
    QVERIFY(!widget.isEnabled());
}

namespace {
// Numbers on cells of two colours, drawn through kept glyphs or by the painter.
class NumbersWidget : public QWidget
{
public:
    NumbersWidget(QWidget* parent, GlyphTiles* tiles)
        : QWidget(parent)
        , m_tiles(tiles)
    {
        setAttribute(Qt::WA_OpaquePaintEvent);
    }
    int frame = 0;

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter p(this);
        const QRawFont raw = QRawFont::fromFont(font());
        const qreal ascent = QFontMetricsF(font()).ascent();
        for (int cell = 0; cell < 24; ++cell) {
            const QRect box(cell % 4 * 60, cell / 4 * 20, 60, 20);
            p.fillRect(box, cell % 3 ? QColor(Qt::white) : QColor(200, 40, 40));
            p.setPen(cell % 3 ? Qt::black : Qt::white);
            // Later frames write a digit where earlier ones left the cell blank.
            const QString text = frame < 3 ? QString::number(cell * 0.37 + frame, 'f', 2)
                                           : QString::number((cell + frame) % 10);
            const QGlyphRun run = glyphRunOf(raw, text, ascent);
            const QVector<quint32> glyphs = run.glyphIndexes();
            const QVector<QPointF> positions = run.positions();
            const QPointF at(box.left() + (frame < 3 ? 3.4 : 44.4), box.top() + 2);
            if (m_tiles)
                m_tiles->draw(&p, at, run, glyphs.constData(), positions.constData(),
                              glyphs.size());
            else
                p.drawGlyphRun(at, run);
        }
    }

private:
    GlyphTiles* m_tiles;
};
} // namespace

void tst_RoadObjectsWidget::glyphCopiesInAWindowAsDrawn()
{
    // A widget paints into its window's pixels through a painter moved to its place:
    // glyphs copied there land where, and as, the painter draws them.
    QWidget window;
    window.resize(520, 150);
    GlyphTiles tiles;
    NumbersWidget copied(&window, &tiles);
    NumbersWidget drawn(&window, nullptr);
    copied.setGeometry(13, 7, 240, 120);
    drawn.setGeometry(271, 18, 240, 120);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    // The last frames repaint two bands only, which cut through some of the numbers.
    const QRegion bands = QRegion(0, 5, 240, 30) + QRegion(0, 52, 240, 41);
    for (int frame = 0; frame < 5; ++frame) {
        copied.frame = drawn.frame = frame;
        copied.update(frame < 3 ? QRegion(copied.rect()) : bands);
        drawn.update(frame < 3 ? QRegion(drawn.rect()) : bands);
        QCoreApplication::sendPostedEvents(&window, QEvent::UpdateRequest);
        const QImage shown = window.screen()->grabWindow(window.winId()).toImage();
        QCOMPARE(shown.copy(copied.geometry()), shown.copy(drawn.geometry()));
    }
    QVERIFY(tiles.size() > 0);
}

QTEST_MAIN(tst_RoadObjectsWidget)
#include "tst_roadobjectswidget.moc"
