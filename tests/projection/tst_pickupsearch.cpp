#include "pickupduplicateindex.h"
#include "pickupfit.h"
#include "pickupsearch.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QtTest>

#include <cmath>

// The parameter pick-up without a window: it finds a known pose from the pixels that
// pose puts known road points at, fails cleanly where no pose can explain the marks,
// and its duplicate index skips exactly the candidates the plain comparison skips.
class tst_PickupSearch : public QObject
{
    Q_OBJECT

private slots:
    void recoversAKnownPose_data();
    void recoversAKnownPose();
    void hopelessMarksEndCleanly_data();
    void hopelessMarksEndCleanly();
    void yieldStopsTheSearch();
    void indexAnswersAsThePlainCheck_data();
    void indexAnswersAsThePlainCheck();
    void indexedSearchEqualsPlainSearch();

private:
    static constexpr int Width = 1280;
    static constexpr int Height = 720;

    struct Case
    {
        int mode;
        PickupParams truth;
        QVector<PickupCheckpoint> marks;
        CameraModel model; // the camera configuration and picture size
    };
    // The marks a true pose gives four road points of known Y, and in mode 2 a 20 m
    // segment along X.
    static Case makeCase(int mode, double height, double y, double azimuth, double elevation,
                         double halfAngle);
};

tst_PickupSearch::Case tst_PickupSearch::makeCase(int mode, double height, double y, double azimuth,
                                                  double elevation, double halfAngle)
{
    Case c;
    c.mode = mode;
    c.truth[PickupParams::Height] = height;
    c.truth[PickupParams::Y] = y;
    c.truth[PickupParams::Azimuth] = azimuth;
    c.truth[PickupParams::Elevation] = elevation;
    c.truth[PickupParams::HalfAngle] = halfAngle;
    c.model.rescale(Width, Height); // the size; the search sets the pose
    PickupSearch truth(c.model, mode, {}, c.truth);
    const CameraModel& seen = truth.modelFor(c.truth);
    const QPointF axis = seen.axisPoint();
    const QVector<QPointF> points{axis + QPointF(-6, -4), axis + QPointF(10, -4),
                                  axis + QPointF(-6, 4),  axis + QPointF(10, 4),
                                  axis + QPointF(-5, 0),  axis + QPointF(15, 0)};
    bool ok = false;
    for (int i = 0; i < (mode == 2 ? 6 : 4); ++i) {
        const QPoint pixel = seen.xyToScreen(points.at(i), &ok);
        Q_ASSERT(ok);
        const double value = i < 4 ? points.at(i).y() : (i == 5 ? 20.0 : 0.0);
        c.marks.append(PickupCheckpoint{pixel, value});
    }
    return c;
}

void tst_PickupSearch::recoversAKnownPose_data()
{
    QTest::addColumn<int>("mode");
    QTest::addColumn<double>("height");
    QTest::addColumn<double>("y");
    QTest::addColumn<double>("azimuth");
    QTest::addColumn<double>("elevation");
    QTest::addColumn<double>("halfAngle");
    QTest::newRow("mode 1, radar over the road") << 1 << 7.0 << 2.0 << 5.0 << 12.0 << 10.0;
    QTest::newRow("mode 1, radar at the roadside") << 1 << 5.0 << -6.0 << -10.0 << 8.0 << 15.0;
    QTest::newRow("mode 2, view angle found too") << 2 << 7.0 << 2.0 << 5.0 << 12.0 << 10.0;
}

void tst_PickupSearch::recoversAKnownPose()
{
    QFETCH(int, mode);
    QFETCH(double, height);
    QFETCH(double, y);
    QFETCH(double, azimuth);
    QFETCH(double, elevation);
    QFETCH(double, halfAngle);
    Case c = makeCase(mode, height, y, azimuth, elevation, halfAngle);
    PickupParams saved = c.truth; // mode 1 keeps the saved view angle
    saved[PickupParams::HalfAngle] = mode == 1 ? halfAngle : 3.0;
    PickupSearch search(c.model, mode, c.marks, saved);
    QVERIFY(search.run());
    const PickupParams& best = search.best();
    // Whole-pixel marks leave a little play; the pose is found within it.
    const double truth[] = {y, height, azimuth, elevation, halfAngle};
    const int index[] = {PickupParams::Y, PickupParams::Height, PickupParams::Azimuth,
                         PickupParams::Elevation, PickupParams::HalfAngle};
    for (int i = 0; i < 5; ++i)
        QVERIFY2(std::fabs(best[index[i]] - truth[i]) < (i == 2 ? 0.5 : 0.3),
                 qPrintable(QString("parameter %1: %2").arg(index[i]).arg(best[index[i]])));
    QCOMPARE(best[PickupParams::X], saved[PickupParams::X]);
    QCOMPARE(best[PickupParams::Roll], 0.0);
    const PickupFit fit = PickupFit::evaluate(search, best);
    QVERIFY(fit.complete);
    QVERIFY(fit.rmsError < 0.05);
    QCOMPARE(fit.hasSegment, mode == 2);
    QVERIFY(fit.detailsText().contains("#4"));
}

void tst_PickupSearch::hopelessMarksEndCleanly_data()
{
    QTest::addColumn<QVector<QPoint>>("pixels");
    QTest::addColumn<double>("halfAngle");
    QTest::addColumn<bool>("aboveHorizon"); // every mark off the road under every pose
    // A 160 degree lens on a radar at most 33 degrees down: the picture's top row
    // looks above the horizon under every pose the search can try.
    QTest::newRow("top row under a 160 degree lens")
        << QVector<QPoint>{{0, 0}, {400, 0}, {800, 0}, {Width - 1, 0}} << 80.0 << true;
    QTest::newRow("the picture's corners")
        << QVector<QPoint>{{0, 0}, {Width - 1, 0}, {0, Height - 1}, {Width - 1, Height - 1}} << 20.0
        << false;
    QTest::newRow("one point four times") << QVector<QPoint>(4, QPoint(640, 600)) << 20.0 << false;
}

void tst_PickupSearch::hopelessMarksEndCleanly()
{
    QFETCH(QVector<QPoint>, pixels);
    QFETCH(double, halfAngle);
    QFETCH(bool, aboveHorizon);
    QVector<PickupCheckpoint> marks;
    for (int i = 0; i < pixels.size(); ++i)
        marks.append(PickupCheckpoint{pixels.at(i), i % 2 ? -3.0 : 3.0});
    CameraModel model;
    model.rescale(Width, Height);
    PickupParams saved;
    saved[PickupParams::HalfAngle] = halfAngle;
    PickupSearch search(model, 1, marks, saved);
    // Every pose may score worst, yet stays a candidate: the search ends with one, and
    // the fit tells what the best pose makes of the marks.
    QVERIFY(search.run());
    QVERIFY(search.stats().scored > 0);
    const PickupFit fit = PickupFit::evaluate(search, search.best());
    if (aboveHorizon) {
        QVERIFY(!fit.complete);
        QVERIFY(fit.detailsText().contains("not on the road"));
    }
    for (double value : search.best().values)
        QVERIFY(std::isfinite(value));
}

void tst_PickupSearch::yieldStopsTheSearch()
{
    Case c = makeCase(2, 7.0, 2.0, 5.0, 12.0, 10.0);
    PickupSearch search(c.model, 2, c.marks, c.truth);
    int calls = 0;
    search.setYield([&calls] { return ++calls < 3; });
    QVERIFY(!search.run());
    QVERIFY(search.wasStopped());
    QCOMPARE(calls, 3);
    QCOMPARE(search.stats().scored, qint64(3 * PickupSearch::YieldEveryScored));
}

void tst_PickupSearch::indexAnswersAsThePlainCheck_data()
{
    QTest::addColumn<double>("tolerance");
    QTest::addColumn<double>("spacing"); // of the lattice the poses lie on
    QTest::newRow("coarse tolerance, lattice finer than it") << 0.5 << 0.15625;
    QTest::newRow("coarse tolerance, lattice as wide as it") << 0.5 << 0.5;
    QTest::newRow("fine tolerance, lattice finer than it") << 0.005 << 0.0029296875;
    QTest::newRow("fine tolerance, off-lattice values") << 0.005 << 0.0;
}

void tst_PickupSearch::indexAnswersAsThePlainCheck()
{
    QFETCH(double, tolerance);
    QFETCH(double, spacing);
    // Poses on a lattice (distances of exactly the tolerance included) or scattered,
    // around values far from 0 and near it; each asked before being entered.
    QRandomGenerator random(12345);
    auto value = [&](double centre) {
        const int steps = random.bounded(-6, 7);
        return spacing > 0.0 ? centre + steps * spacing
                             : centre + (random.generateDouble() - 0.5) * 12.0 * tolerance;
    };
    PickupDuplicateIndex index;
    index.reset(tolerance);
    QVector<PickupParams> scored;
    int skipped = 0;
    for (int n = 0; n < 4000; ++n) {
        PickupParams p;
        p[PickupParams::X] = 1.25;
        p[PickupParams::Y] = value(-3.3);
        p[PickupParams::Height] = value(7.0);
        p[PickupParams::Azimuth] = value(0.0);
        p[PickupParams::Elevation] = value(12.345);
        p[PickupParams::HalfAngle] = value(7.5);
        const bool literal = PickupDuplicateIndex::containsLiterally(scored, p, tolerance);
        QCOMPARE(index.contains(p), literal);
        if (literal) {
            ++skipped;
            continue;
        }
        scored.append(p);
        index.insert(p);
    }
    QVERIFY(skipped > 0 && skipped < 4000); // both answers occurred
}

void tst_PickupSearch::indexedSearchEqualsPlainSearch()
{
    // A whole search, coarse and fine, in mode 1. The plain check of mode 2 takes
    // seconds even in an optimised build (its passes hold hundreds of thousands of
    // poses); the index's answers on all seven parameters are checked above.
    const Case c = makeCase(1, 5.0, -6.0, -10.0, 8.0, 12.0);
    PickupSearch indexed(c.model, 1, c.marks, c.truth);
    PickupSearch plain(c.model, 1, c.marks, c.truth);
    plain.setDuplicateCheck(PickupSearch::DuplicateCheck::Literal);
    const bool a = indexed.run();
    const bool b = plain.run();
    QCOMPARE(a, b);
    QCOMPARE(indexed.best().values, plain.best().values);
    QCOMPARE(indexed.stats().duplicates, plain.stats().duplicates);
    QCOMPARE(indexed.stats().scored, plain.stats().scored);
    QCOMPARE(indexed.lastBeamScores(), plain.lastBeamScores());
}

QTEST_APPLESS_MAIN(tst_PickupSearch)
#include "tst_pickupsearch.moc"
