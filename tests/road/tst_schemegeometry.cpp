#include "boxpictures.h"
#include "fixedtext.h"
#include "glyphruntext.h"
#include "glyphtext.h"
#include "glyphtiles.h"
#include "labelpictures.h"
#include "objectcolor.h"
#include "schemegeometry.h"
#include "schemelabelplacer.h"
#include "trackrasterizer.h"

#include <QStaticText>
#include <QtTest>

#include <cmath>
#include <limits>
#include <random>

// The traffic scheme's headless parts: the mapping from metres to pixels in both
// orientations, object glyph sizes and headings, the placing of side labels, and the
// numbers its labels and the tables write, the kept pictures of its labels, and the
// current tracks as written pixel by pixel.
class tst_SchemeGeometry : public QObject
{
    Q_OBJECT

private slots:
    void viewArea_data();
    void viewArea();
    void screenTransform_data();
    void screenTransform();
    void glyphs_data();
    void glyphs();
    void labelsNeverCoverOneAnother_data();
    void labelsNeverCoverOneAnother();
    void fixedNumbersReadAsQtWritesThem_data();
    void fixedNumbersReadAsQtWritesThem();
    void labelPicturesLookAsDrawnInPlace_data();
    void labelPicturesLookAsDrawnInPlace();
    void labelPicturesFollowTheTraffic();
    void boxPicturesAsDrawnInPlace_data();
    void boxPicturesAsDrawnInPlace();
    void tracksAsDrawnPointByPoint_data();
    void tracksAsDrawnPointByPoint();
    void glyphTilesAsDrawnByThePainter_data();
    void glyphTilesAsDrawnByThePainter();

private:
    // A 100 m road 20 m wide, centred on the radar's line.
    static SchemeGeometry geometry(const QSize& size, bool vertical = false, bool keep = true)
    {
        SchemeGeometry g;
        g.rescale(SchemeGeometry::viewAreaFor(QRectF(0, -10, 100, 20)), size, vertical, keep);
        return g;
    }
};

void tst_SchemeGeometry::viewArea_data()
{
    QTest::addColumn<QRectF>("road");
    QTest::addColumn<QRectF>("view");
    QTest::newRow("empty road: 5 m ahead, 2 m aside") << QRectF() << QRectF(0, -2, 5, 4);
    QTest::newRow("road behind the radar kept")
        << QRectF(-30, -8, 100, 10) << QRectF(-30, -8, 100, 10);
    QTest::newRow("narrow road widened to 2 m aside")
        << QRectF(10, -1, 50, 1.5) << QRectF(0, -2, 60, 4);
}

void tst_SchemeGeometry::viewArea()
{
    QFETCH(QRectF, road);
    QFETCH(QRectF, view);
    QCOMPARE(SchemeGeometry::viewAreaFor(road), view);
    SchemeGeometry g;
    g.rescale(view, QSize(400, 300), false, true);
    QVERIFY(g.isValid());
    g.rescale(view, QSize(39, 300), false, true); // too small to draw in
    QVERIFY(!g.isValid());
}

void tst_SchemeGeometry::screenTransform_data()
{
    QTest::addColumn<bool>("vertical");
    QTest::addColumn<bool>("keep");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<double>("scaleX");
    QTest::addColumn<double>("scaleY");
    QTest::addColumn<QPoint>("origin");
    QTest::addColumn<QPoint>("at10m2m"); // where the road point (10, 2) lands

    // 540 px along gives (540 - 40) / 100 = 5 px/m; 208 px across gives (208 - 8) / 20.
    QTest::newRow("horizontal, one scale")
        << false << true << QSize(540, 208) << 5.0 << 5.0 << QPoint(36, 103) << QPoint(86, 93);
    QTest::newRow("horizontal, scales apart")
        << false << false << QSize(540, 208) << 5.0 << 10.0 << QPoint(36, 103) << QPoint(86, 83);
    QTest::newRow("vertical, one scale")
        << true << true << QSize(208, 540) << 5.0 << 5.0 << QPoint(103, 504) << QPoint(93, 454);
    QTest::newRow("vertical, scales apart")
        << true << false << QSize(208, 540) << 5.0 << 10.0 << QPoint(103, 504) << QPoint(83, 454);
}

void tst_SchemeGeometry::screenTransform()
{
    QFETCH(bool, vertical);
    QFETCH(bool, keep);
    QFETCH(QSize, size);
    QFETCH(double, scaleX);
    QFETCH(double, scaleY);
    QFETCH(QPoint, origin);

    const SchemeGeometry g = geometry(size, vertical, keep);
    QVERIFY(g.isValid());
    QCOMPARE(g.scaleX(), scaleX);
    QCOMPARE(g.scaleY(), scaleY);
    QCOMPARE(g.aspect(), scaleY / scaleX);
    QCOMPARE(g.origin(), origin);
    QCOMPARE(g.xyToScreen(0, 0), origin);
    QTEST(g.xyToScreen(10, 2), "at10m2m");
    // A point far out of sight stays a pixel rather than overflow.
    const QPoint far = g.xyToScreen(1e300, -1e300);
    QVERIFY(qAbs(far.x()) < 100000000 && qAbs(far.y()) < 100000000);
}

void tst_SchemeGeometry::glyphs_data()
{
    QTest::addColumn<bool>("keep");
    QTest::addColumn<double>("length");
    QTest::addColumn<QPointF>("speed"); // along X, along Y
    QTest::addColumn<QSize>("pixels"); // along the heading, across it, at 5 px/m
    QTest::addColumn<double>("heading");

    QTest::newRow("car along X") << true << 4.0 << QPointF(10, 0) << QSize(20, 10) << 0.0;
    QTest::newRow("length 0 drawn 1 m by 1 m, against X")
        << true << 0.0 << QPointF(-10, 0) << QSize(5, 5) << 180.0;
    QTest::newRow("length 1.8 is 1 m wide, drifting left")
        << true << 1.8 << QPointF(-10, 10) << QSize(9, 5) << 135.0;
    QTest::newRow("length 2.0 is 2 m wide, across only to the right")
        << true << 2.0 << QPointF(0, -5) << QSize(10, 10) << -90.0;
    QTest::newRow("standing still") << true << 4.0 << QPointF(0, 0) << QSize(20, 10) << 0.0;
    // Scales apart (aspect 2): sizes fixed whatever the scale; the heading follows the
    // distortion and folds into -90..90, so a vehicle going against X faces along it.
    QTest::newRow("car, scales apart, diagonal")
        << false << 4.0 << QPointF(10, 10) << QSize(64, 32) << 63.434948822922;
    QTest::newRow("truck, scales apart, against X, folded")
        << false << 16.5 << QPointF(-10, 0) << QSize(264, 32) << 0.0;
    QTest::newRow("scales apart, against X drifting left, folded")
        << false << 4.0 << QPointF(-10, 10) << QSize(64, 32) << -63.434948822922;
}

void tst_SchemeGeometry::glyphs()
{
    QFETCH(bool, keep);
    QFETCH(double, length);
    QFETCH(QPointF, speed);
    QFETCH(QSize, pixels);
    QFETCH(double, heading);
    const SchemeGeometry g = geometry(QSize(540, 208), false, keep);
    QCOMPARE(g.objectPixelSize(length), pixels);
    // Zooming in (10 px/m) changes only the sizes that follow the scale.
    QCOMPARE(geometry(QSize(1040, 408), false, keep).objectPixelSize(length),
             keep ? pixels * 2 : pixels);
    const double got = g.objectHeading(speed.x(), speed.y());
    QVERIFY2(qAbs(got - heading) < 1e-6, qPrintable(QString::number(got, 'g', 12)));
}

void tst_SchemeGeometry::labelsNeverCoverOneAnother_data()
{
    QTest::addColumn<int>("objects");
    QTest::addColumn<QPoint>("spacing"); // between neighbouring objects, pixels
    QTest::addColumn<bool>("someMoved"); // some labels cannot stay at their usual place
    QTest::addColumn<bool>("someShortened"); // some are cut to the id

    QTest::newRow("far apart: every label at its usual place")
        << 4 << QPoint(150, 0) << false << false;
    QTest::newRow("side by side across the road") << 2 << QPoint(0, 8) << true << false;
    QTest::newRow("a platoon along a lane") << 6 << QPoint(30, 0) << true << false;
    QTest::newRow("at the view's edge: moved inside") << 1 << QPoint() << true << false;
    QTest::newRow("a crowd with no room left: ids only") << 40 << QPoint(3, 2) << true << true;
}

void tst_SchemeGeometry::labelsNeverCoverOneAnother()
{
    QFETCH(int, objects);
    QFETCH(QPoint, spacing);
    QFETCH(bool, someShortened);

    const QRect view(0, 0, 800, 200);
    SchemeLabelPlacer placer;
    placer.reset(view);
    QVector<SchemeLabelPlacer::Label> labels;
    for (int i = 0; i < objects; ++i) {
        SchemeLabelPlacer::Label label;
        label.anchor = objects == 1 ? QPoint(750, 100) : QPoint(100, 100) + spacing * i;
        label.glyph = QRect(label.anchor - QPoint(0, 3), QSize(12, 6));
        label.clearance = 15;
        label.size = QSize(90, 14);
        label.shortSize = QSize(30, 14);
        placer.addGlyph(label.glyph);
        labels.append(label);
    }
    QVector<SchemeLabelPlacer::Placement> placed;
    for (const auto& label : qAsConst(labels))
        placed.append(placer.place(label));

    bool moved = false;
    bool shortened = false;
    for (int i = 0; i < placed.size(); ++i) {
        const SchemeLabelPlacer::Placement& p = placed.at(i);
        moved = moved || p.moved;
        shortened = shortened || p.shortened;
        QCOMPARE(p.box.size(), p.shortened ? labels[i].shortSize : labels[i].size);
        if (!p.moved && !p.shortened)
            QCOMPARE(p.box.topLeft(), labels[i].anchor + QPoint(15, -7));
        if (p.moved && !someShortened) // with room enough a moved label covers no object
            for (const auto& other : qAsConst(labels))
                QVERIFY(!other.glyph.intersects(p.box));
    }
    QTEST(moved, "someMoved");
    QCOMPARE(shortened, someShortened);
    if (someShortened)
        return; // where nothing is free the ids go over one another
    for (int i = 0; i < placed.size(); ++i) {
        QVERIFY(view.contains(placed[i].box));
        for (int j = 0; j < i; ++j)
            QVERIFY(!placed[i].box.intersects(placed[j].box));
    }
}

void tst_SchemeGeometry::fixedNumbersReadAsQtWritesThem_data()
{
    QTest::addColumn<int>("decimals");
    QTest::addColumn<double>("step"); // values from -400 to 400 this far apart
    QTest::addColumn<double>("offset"); // from each multiple of the step
    // Halves of the last decimal, exact in binary (0.125) or not (0.005): which way
    // they round depends on the exact value.
    QTest::newRow("whole numbers, halves") << 0 << 0.5 << 0.0;
    QTest::newRow("one decimal, halves") << 1 << 0.05 << 0.0;
    QTest::newRow("two decimals, exact halves") << 2 << 0.125 << 0.0;
    QTest::newRow("two decimals, halves") << 2 << 0.005 << 0.0;
    QTest::newRow("two decimals, just above halves") << 2 << 0.005 << 1e-12;
    QTest::newRow("three decimals, arbitrary") << 3 << 0.0137 << 0.0;
    QTest::newRow("four decimals: Qt's own") << 4 << 0.0137 << 0.0;
}

void tst_SchemeGeometry::fixedNumbersReadAsQtWritesThem()
{
    QFETCH(int, decimals);
    QFETCH(double, step);
    QFETCH(double, offset);
    // Written over a kept text, in place or not, the same; a copy of the kept text taken
    // before (every other time) keeps what it read.
    QString kept;
    int count = 0;
    auto check = [&](double value) {
        const QString expected = QString::number(value, 'f', decimals);
        QCOMPARE(FixedText::number(value, decimals), expected);
        const bool share = ++count % 2 == 0;
        const QString before = share ? kept : QString();
        const QString read(kept.constData(), kept.size());
        FixedText::write(value, decimals, &kept);
        QCOMPARE(kept, expected);
        if (share)
            QCOMPARE(before, read);
    };
    for (double k = std::ceil(-400.0 / step); k * step <= 400.0 && !QTest::currentTestFailed(); ++k)
        check(k * step + offset);
    const double inf = std::numeric_limits<double>::infinity();
    for (double value : {0.0, -0.0, -1e-300, -0.004, 1e300, inf, -inf, std::nan("")}) {
        if (!QTest::currentTestFailed())
            check(value);
    }
}

void tst_SchemeGeometry::labelPicturesLookAsDrawnInPlace_data()
{
    QTest::addColumn<int>("writing"); // glyph run, laid-out text at 20 pixels, painter's font
    QTest::addColumn<int>("dpi"); // the window's resolution, for a font in points
    QTest::addColumn<qreal>("ratio"); // the window's device pixel ratio
    QTest::addColumn<QPointF>("shift"); // the painter's translation
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("limit"); // pictures kept at most
    QTest::addColumn<int>("kept"); // pictures kept after the three labels

    const QString label = "[7] 53.3 km/h";
    const QString longer = "[7] 53.3 km/h, 0.1 km/h across";
    QTest::newRow("glyph run on a filled box")
        << 0 << 96 << 1.0 << QPointF(3, 5) << label << 10 << 2;
    QTest::newRow("laid-out text in a framed box")
        << 1 << 96 << 1.0 << QPointF(0, 0) << label << 10 << 2;
    QTest::newRow("points on a window of 120 dpi")
        << 2 << 120 << 1.0 << QPointF(0, 0) << label << 10 << 2;
    QTest::newRow("a full set starts afresh") << 0 << 96 << 1.0 << QPointF(0, 0) << label << 1 << 1;
    QTest::newRow("a long text: drawn in place")
        << 2 << 96 << 1.0 << QPointF(0, 0) << longer << 10 << 0;
    QTest::newRow("half a pixel off: drawn in place")
        << 0 << 96 << 1.0 << QPointF(0.5, 0) << label << 10 << 0;
    QTest::newRow("a doubled display: drawn in place")
        << 1 << 96 << 2.0 << QPointF(0, 0) << label << 10 << 0;
}

void tst_SchemeGeometry::labelPicturesLookAsDrawnInPlace()
{
    // A label copied from its picture has the pixels of the label drawn in place: the
    // same text in the same colours again at another place, the same text in other
    // colours, at the window's resolution; where the painter does not draw one to one,
    // it is drawn in place.
    QFETCH(int, writing);
    QFETCH(int, dpi);
    QFETCH(qreal, ratio);
    QFETCH(QPointF, shift);
    QFETCH(QString, text);
    QFETCH(int, limit);
    QFETCH(int, kept);
    QFont font;
    font.setPointSize(11); // not the application's font
    GlyphText glyphs;
    glyphs.setFont(font);
    QFont laidOutFont;
    laidOutFont.setPixelSize(20);
    struct Label
    {
        QString text;
        quint16 tag;
        QRect box;
        QColor fill, ink;
    };
    const QVector<Label> labels{{text, 1, QRect(4, 4, 150, 28), Qt::red, Qt::white},
                                {text, 1, QRect(31, 37, 150, 28), Qt::red, Qt::white},
                                {text, 2, QRect(70, 72, 150, 28), Qt::yellow, Qt::black}};
    auto drawLabel = [&](const Label& label, QPainter& p, const QPoint& at) {
        const QRect box(at, label.box.size());
        p.fillRect(box, label.ink);
        p.fillRect(box.adjusted(1, 1, -1, -1), label.fill);
        p.setPen(label.ink);
        if (writing == 0 && glyphs.layout(label.text)) {
            glyphs.draw(&p, QPointF(at.x() + 2.0, at.y() + 1.0));
        } else if (writing == 1) {
            p.setFont(laidOutFont);
            p.drawStaticText(at + QPoint(3, 1), QStaticText(label.text));
        } else {
            p.drawText(box, Qt::AlignCenter, label.text);
        }
    };
    auto window = [&] {
        QImage image(QSizeF(QSize(240, 110) * ratio).toSize(), QImage::Format_RGB32);
        image.setDevicePixelRatio(ratio);
        image.setDotsPerMeterX(qRound(dpi / 0.0254));
        image.setDotsPerMeterY(qRound(dpi / 0.0254));
        image.fill(QColor(40, 60, 80));
        return image;
    };
    QImage copied = window();
    QImage drawn = window();
    LabelPictures pictures(limit);
    {
        QPainter p(&copied);
        p.setFont(font);
        p.translate(shift);
        for (const Label& label : labels) {
            pictures.draw(p, label.box, label.text, label.tag,
                          [&](QPainter& onto, const QPoint& at) { drawLabel(label, onto, at); });
        }
        QPainter q(&drawn);
        q.setFont(font);
        q.translate(shift);
        for (const Label& label : labels)
            drawLabel(label, q, label.box.topLeft());
    }
    QCOMPARE(pictures.size(), kept);
    QCOMPARE(copied, drawn);
}

void tst_SchemeGeometry::labelPicturesFollowTheTraffic()
{
    // Hours of traffic: each vehicle's speed reading moves on every few frames, and a
    // vehicle that stands still keeps its one label. The pictures kept stay well under
    // the limit (they are memory), the standing vehicle's label is drawn once, and one
    // that swings between two readings keeps both.
    QImage window(400, 40, QImage::Format_RGB32);
    QPainter p(&window);
    LabelPictures pictures;
    int drawn = 0;
    auto draw = [&](const QString& text) {
        pictures.draw(p, QRect(0, 0, 60, 14), text, 0, [&](QPainter& onto, const QPoint& at) {
            ++drawn;
            onto.fillRect(QRect(at, QSize(60, 14)), Qt::white);
        });
    };
    int largest = 0;
    for (int frame = 0; frame < 20000; ++frame) {
        for (int vehicle = 0; vehicle < 8; ++vehicle)
            draw(QString("[%1] %2").arg(vehicle).arg(frame / 3 + vehicle * 1000));
        pictures.finishFrame();
        largest = std::max(largest, pictures.size());
    }
    // Each vehicle's labels of the last frames kept, a new one every third frame.
    QVERIFY2(largest <= 8 * (LabelPictures::KeptFrames * 3 / 2 / 3 + 1),
             qPrintable(QString::number(largest)));
    drawn = 0;
    for (int frame = 0; frame < 5000; ++frame) {
        draw("[9] 0.0");
        draw(frame % 2 ? "[10] 50.0" : "[10] 50.1");
        for (int vehicle = 0; vehicle < 8; ++vehicle)
            draw(QString("[%1] %2").arg(vehicle).arg(frame + vehicle * 10000));
        pictures.finishFrame();
    }
    QCOMPARE(drawn, 5000 * 8 + 3);
}

void tst_SchemeGeometry::boxPicturesAsDrawnInPlace_data()
{
    QTest::addColumn<bool>("anyHeading"); // else a few headings, as 0.1 m/s steps give
    QTest::addColumn<int>("margin"); // how far past the window's edges boxes may go
    QTest::newRow("any heading, inside") << true << -30;
    QTest::newRow("any heading, across the edges") << true << 20;
    QTest::newRow("few headings, across the edges") << false << 20;
}

void tst_SchemeGeometry::boxPicturesAsDrawnInPlace()
{
    // Turned boxes copied from their pictures have the pixels of boxes drawn in place,
    // at every heading and size, wholly inside the window or cut by its edges; boxes
    // alike share a picture.
    QFETCH(bool, anyHeading);
    QFETCH(int, margin);
    const QSize size(300, 200);
    auto window = [&](qreal ratio = 1.0) {
        QImage image(QSizeF(size * ratio).toSize(), QImage::Format_RGB32);
        image.setDevicePixelRatio(ratio);
        image.fill(QColor(0, 40, 40));
        return image;
    };
    QImage copied = window();
    QImage drawn = window();
    BoxPictures pictures;
    std::mt19937 random(7);
    auto uniform
        = [&](int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); };
    const QRect view(QPoint(0, 0), size);
    QPainter c(&copied);
    QPainter d(&drawn);
    QVERIFY(BoxPictures::canCopy(c));
    for (int i = 0; i < 3000; ++i) {
        const int length = uniform(3, 30);
        const int width = uniform(2, 12);
        const QRect body(QPoint(0, -width / 2), QPoint(length - 2, width - width / 2 - 2));
        const qreal degrees = anyHeading ? std::uniform_real_distribution<qreal>(-90, 90)(random)
                                         : std::atan2(0.1 * uniform(-2, 2), 20.0) * 180 / M_PI;
        const QPoint at(uniform(-margin, size.width() + margin),
                        uniform(-margin, size.height() + margin));
        const quint8 look = quint8(uniform(0, 3));
        const QColor& colour = ObjectColor::base(look);
        const QPen outline(colour, 1.0, Qt::SolidLine, Qt::SquareCap, Qt::BevelJoin);
        QTransform transform;
        transform.translate(at.x(), at.y());
        transform.rotate(degrees);
        pictures.draw(c, view, transform, body, look, outline, QBrush(colour));
        d.setTransform(transform);
        d.setPen(outline);
        d.setBrush(colour);
        d.drawRect(body);
    }
    c.end();
    d.end();
    QCOMPARE(copied, drawn);

    // The same box at many places: one picture. Smoothed or scaled, boxes are drawn in
    // place.
    BoxPictures again;
    QImage image = window();
    QPainter p(&image);
    for (int x = 10; x < 250; x += 17)
        again.draw(p, view, QTransform().translate(x, 100).rotate(12.5), QRect(0, -3, 12, 6), 0,
                   QPen(Qt::red), Qt::red);
    QCOMPARE(again.size(), 1);
    // A long truck close up is drawn in place: no picture of it is kept.
    again.draw(p, view, QTransform().translate(150, 100).rotate(3.0), QRect(0, -20, 120, 40), 0,
               QPen(Qt::red), Qt::red);
    QCOMPARE(again.size(), 1);
    p.setRenderHint(QPainter::Antialiasing);
    QVERIFY(!BoxPictures::canCopy(p));
    QImage scaled = window(2.0);
    QVERIFY(!BoxPictures::canCopy(QPainter(&scaled)));
}

void tst_SchemeGeometry::tracksAsDrawnPointByPoint_data()
{
    QTest::addColumn<int>("step"); // the largest step between points, in pixels
    QTest::addColumn<bool>("clipped");
    QTest::addColumn<int>("repeats"); // one point in so many is repeated
    QTest::newRow("neighbouring pixels") << 1 << false << 0;
    QTest::newRow("neighbouring pixels, clipped") << 1 << true << 0;
    QTest::newRow("long steps") << 12 << false << 0;
    QTest::newRow("long steps, clipped") << 12 << true << 0;
    QTest::newRow("a standing vehicle") << 1 << false << 2;
    QTest::newRow("mixed steps, clipped, repeats") << 5 << true << 4;
}

void tst_SchemeGeometry::tracksAsDrawnPointByPoint()
{
    // Random tracks, each drawn over the last in another colour, against the tracks as
    // promised, pixel by pixel: a 2 x 2 block up and left of every step of the line
    // between two points, a 3 x 3 square up and left of every point but the last one's
    // place, and nothing outside the clip.
    QFETCH(int, step);
    QFETCH(bool, clipped);
    QFETCH(int, repeats);
    std::mt19937 random(7);
    const auto draw = [](QImage& image, const QRect& clip, const QPolygon& points, QRgb color) {
        const auto block = [&](int x, int y, int size) {
            for (int row = y - size + 1; row <= y; ++row)
                for (int column = x - size + 1; column <= x; ++column)
                    if (clip.contains(column, row))
                        image.setPixel(column, row, color);
        };
        for (int i = 1; i < points.size(); ++i) {
            const QPoint a = points.at(i - 1), b = points.at(i);
            const int dx = std::abs(b.x() - a.x()), dy = -std::abs(b.y() - a.y());
            for (int x = a.x(), y = a.y(), err = dx + dy; a != b;) {
                block(x, y, 2);
                if (x == b.x() && y == b.y())
                    break;
                const int e2 = 2 * err;
                if (e2 >= dy) {
                    err += dy;
                    x += a.x() < b.x() ? 1 : -1;
                }
                if (e2 <= dx) {
                    err += dx;
                    y += a.y() < b.y() ? 1 : -1;
                }
            }
        }
        for (const QPoint& p : points)
            if (p != points.last())
                block(p.x(), p.y(), 3);
    };
    for (int track = 0; track < 300; ++track) {
        QImage drawn(60, 40, QImage::Format_RGB32), expected(60, 40, QImage::Format_RGB32);
        drawn.fill(Qt::black);
        expected.fill(Qt::black);
        const QRect clip
            = clipped ? QRect(int(random() % 40), int(random() % 30), 20, 12) : drawn.rect();
        TrackRasterizer rasterizer;
        rasterizer.begin(&drawn, clip);
        for (const QRgb color : {0xffff0000u, 0xff00ff00u}) {
            QPolygon points;
            QPoint p(1 + int(random() % 59), 1 + int(random() % 39));
            for (int i = 0; i < 30; ++i) {
                p += QPoint(int(random() % (2 * step + 1)) - step,
                            int(random() % (2 * step + 1)) - step);
                p = QPoint(std::clamp(p.x(), 1, 59), std::clamp(p.y(), 1, 39));
                points << p;
                if (repeats && random() % repeats == 0)
                    points << p;
            }
            rasterizer.drawTrack(points, color);
            draw(expected, clip, points, color);
        }
        QVERIFY2(drawn == expected, qPrintable(QString("track %1").arg(track)));
    }
}

void tst_SchemeGeometry::glyphTilesAsDrawnByThePainter_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<int>("look"); // 0 plain, 1 clipped, 2 mottled cells, 3 turned, 4 italic
    QTest::addColumn<bool>("copies"); // whether glyphs are copied rather than drawn
    QTest::newRow("cells of three colours") << int(QImage::Format_RGB32) << 0 << true;
    QTest::newRow("translucent cells") << int(QImage::Format_ARGB32_Premultiplied) << 0 << true;
    QTest::newRow("a clipped painter") << int(QImage::Format_RGB32) << 1 << false;
    QTest::newRow("mottled cells") << int(QImage::Format_RGB32) << 2 << false;
    QTest::newRow("a turned painter") << int(QImage::Format_RGB32) << 3 << false;
    QTest::newRow("italic letters that lean on each other")
        << int(QImage::Format_RGB32) << 4 << false;
}

void tst_SchemeGeometry::glyphTilesAsDrawnByThePainter()
{
    // Texts drawn over three frames, once through the kept glyphs and once by the
    // painter, must give the same pixels; the kept glyphs are copied only where that
    // holds.
    QFETCH(int, format);
    QFETCH(int, look);
    QFETCH(bool, copies);
    QFont font;
    font.setPixelSize(15);
    font.setItalic(look == 4);
    const QRawFont raw = QRawFont::fromFont(font);
    const qreal ascent = QFontMetricsF(font).ascent();
    const QColor cells[] = {Qt::white, QColor(30, 144, 255), QColor(255, 255, 0, 160)};
    const QColor inks[] = {Qt::black, QColor(120, 0, 60)};
    std::mt19937 random(11);
    GlyphTiles tiles;
    for (int frame = 0; frame < 3; ++frame) {
        QImage copied(220, 150, QImage::Format(format));
        copied.fill(Qt::transparent);
        QImage drawn = copied;
        QPainter a(&copied), b(&drawn);
        for (QPainter* p : {&a, &b}) {
            p->translate(3, 2);
            if (look == 1)
                p->setClipRect(0, 0, 150, 100);
            if (look == 3)
                p->rotate(2);
        }
        for (int row = 0; row < 6; ++row) {
            for (int column = 0; column < 3; ++column) {
                const QRect cell(column * 70, row * 24, 68, 22);
                const QString text
                    = look == 4 ? QStringLiteral("fff WWff")
                                : QString::number(int(random() % 200000) / 100.0 - 1000.0, 'f', 2);
                const QGlyphRun run = glyphRunOf(raw, text, ascent);
                const QVector<quint32> glyphs = run.glyphIndexes();
                const QVector<QPointF> positions = run.positions();
                const QPointF at(cell.left() + 2 + column * 0.25, cell.top() + 3 + row % 3 * 0.3);
                for (QPainter* p : {&a, &b}) {
                    p->fillRect(cell, cells[(row + column) % 3]);
                    if (look == 2)
                        p->fillRect(cell.adjusted(10, 8, -30, -9), Qt::green);
                    p->setPen(inks[row % 2]);
                }
                tiles.draw(&a, at, run, glyphs.constData(), positions.constData(), glyphs.size());
                b.drawGlyphRun(at, run);
            }
        }
        a.end();
        b.end();
        QCOMPARE(copied, drawn);
    }
    QCOMPARE(tiles.size() > 0, copies);
}

QTEST_MAIN(tst_SchemeGeometry)
#include "tst_schemegeometry.moc"
