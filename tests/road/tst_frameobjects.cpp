#include "frameobjects.h"

#include <QtTest>

#include <map>

class tst_FrameObjects : public QObject
{
    Q_OBJECT

private slots:
    void insertedInAnyOrder_data();
    void insertedInAnyOrder();
};

void tst_FrameObjects::insertedInAnyOrder_data()
{
    // Ids in the order of arrival; a repeated id is a second report of the same object.
    QTest::addColumn<QVector<int>>("ids");
    QTest::newRow("radar's order") << QVector<int>{0, 3, 17, 200, 255};
    QTest::newRow("descending") << QVector<int>{255, 9, 8, 1, 0};
    QTest::newRow("one out of order") << QVector<int>{2, 5, 9, 4, 12};
    QTest::newRow("repeated ids") << QVector<int>{7, 3, 7, 250, 3, 0, 250};
}

void tst_FrameObjects::insertedInAnyOrder()
{
    QFETCH(QVector<int>, ids);
    FrameObjects objects;
    // Two frames through the same container: the second starts from a cleared one.
    for (int frame = 0; frame < 2; ++frame) {
        objects.clear();
        std::map<quint8, double> expected; // id -> X range of its last report
        for (int i = 0; i < ids.size(); ++i) {
            const quint8 id = quint8(ids.at(i));
            const double x = 10.0 * frame + i;
            objects.insert(RoadObject{id, 0, 0, x, 0, 4, QDateTime()});
            expected[id] = x;
        }
        QCOMPARE(objects.size(), int(expected.size()));
        auto want = expected.cbegin();
        for (const RoadObject& o : objects) {
            QCOMPARE(o.id, want->first);
            QCOMPARE(o.xRange, want->second);
            ++want;
        }
        for (int id = 0; id < 256; ++id) {
            const auto it = expected.find(quint8(id));
            const RoadObject* found = objects.find(quint8(id));
            QCOMPARE(objects.contains(quint8(id)), it != expected.end());
            QCOMPARE(found != nullptr, it != expected.end());
            if (found)
                QCOMPARE(found->xRange, it->second);
        }
    }
}

QTEST_APPLESS_MAIN(tst_FrameObjects)
#include "tst_frameobjects.moc"
