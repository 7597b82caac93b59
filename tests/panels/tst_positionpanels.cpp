#include "cmdhandler.h"
#include "iorvexclient.h"
#include "parhandler.h"
#include "parstatelabel.h"
#include "radarparamnumbering.h"
#include "readbackmark.h"
#include "setpolygonwidget.h"
#include "setpositionwidget.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QGroupBox>
#include <QPushButton>
#include <QtTest>
#include <QVBoxLayout>

#include <cmath>
#include <functional>
#include <memory>

using C = IOrvexClient;
using L = ParStateLabel;

// The position and limitations panels on their own, each in a titled box: the exact
// requests each of their buttons and the radar's start of work produce, and what they
// make of the radar's answers, those out of their range included.
class tst_PositionPanels : public QObject
{
    Q_OBJECT

public:
    using Action = std::function<void(tst_PositionPanels*)>;

private slots:
    void init();
    void cleanup();

    void requests_data();
    void requests();
    void autoGet_data();
    void autoGet();
    void positionReadBack_data();
    void positionReadBack();
    void limitationAnswers_data();
    void limitationAnswers();
    void usageSwitch();
    void enabling_data();
    void enabling();

private:
    QDoubleSpinBox* spin(const QString& name) const
    {
        return m_window->findChild<QDoubleSpinBox*>(name);
    }
    QPushButton* button(const char* name) const { return m_window->findChild<QPushButton*>(name); }
    L* label(const QString& name) const { return m_window->findChild<L*>(name + "ResultLabel"); }
    void record(const QString& request, const QWidget* panel);
    void setWorking();

    std::unique_ptr<QWidget> m_window;
    SetPositionWidget* m_position = nullptr;
    SetPolygonWidget* m_limitations = nullptr;
    QStringList m_requests;
    bool m_labelShownAtRequest = false;
};
Q_DECLARE_METATYPE(tst_PositionPanels::Action)

namespace {

const QStringList PositionNames{"height", "xOffset", "yOffset", "azimuth", "altitude", "roll"};
const QStringList BoundNames{"spdXmin", "spdXmax", "spdYmin", "spdYmax",
                             "posXmin", "posXmax", "posYmin", "posYmax"};

// What a read of the whole area asks, in its order: speeds, vertex count, vertices 0,
// 2, 1, 3 with X before Y.
const QStringList AreaRead{"get speed 0 0", "get speed 0 1", "get speed 0 2", "get speed 0 3",
                           "get treat 0 0", "get point 0 0", "get point 0 8", "get point 0 2",
                           "get point 0 10", "get point 0 1", "get point 0 9", "get point 0 3",
                           "get point 0 11"};

template<typename Panel> Panel* inBox(QWidget* window)
{
    auto* box = new QGroupBox(window);
    window->layout()->addWidget(box);
    auto* panel = new Panel(box);
    (new QVBoxLayout(box))->addWidget(panel);
    return panel;
}

} // namespace

void tst_PositionPanels::init()
{
    m_window = std::make_unique<QWidget>();
    new QVBoxLayout(m_window.get());
    m_position = inBox<SetPositionWidget>(m_window.get());
    m_limitations = inBox<SetPolygonWidget>(m_window.get());
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));

    using S = SetPolygonWidget;
    connect(m_position, &SetPositionWidget::setPosition, this,
            [this](double h, double x, double y, double a, double e, double r) {
                record(QString("set position %1 %2 %3 %4 %5 %6")
                           .arg(h).arg(x).arg(y).arg(a).arg(e).arg(r),
                       m_position);
            });
    connect(m_position, &SetPositionWidget::getPosition, this, [this] { record("get position", m_position); });
    const auto set = [this](const QString& what) {
        return [this, what](quint8 polygon, quint8 param, double value) {
            record(QString("set %1 %2 %3 %4").arg(what).arg(polygon).arg(param).arg(value),
                   m_limitations);
        };
    };
    const auto get = [this](const QString& what) {
        return [this, what](quint8 polygon, quint8 param) {
            record(QString("get %1 %2 %3").arg(what).arg(polygon).arg(param), m_limitations);
        };
    };
    connect(m_limitations, &S::setPolygonSpeedParam, this, set("speed"));
    connect(m_limitations, &S::setPolygonPointParam, this, set("point"));
    connect(m_limitations, &S::setPolygonTreatParam, this,
            [set](quint8 polygon, quint8 param, quint8 value) { set("treat")(polygon, param, value); });
    connect(m_limitations, &S::getPolygonSpeedParam, this, get("speed"));
    connect(m_limitations, &S::getPolygonPointParam, this, get("point"));
    connect(m_limitations, &S::getPolygonTreatParam, this, get("treat"));
    connect(m_limitations, &S::reinitPolygons, this, [this] { record("reinit", m_limitations); });
    connect(m_limitations, &S::setPolygonUsage, this,
            [this](quint8 mask) { record(QString("set usage %1").arg(mask), m_limitations); });
    connect(m_limitations, &S::getPolygonUsage, this, [this] { record("get usage", m_limitations); });
}

void tst_PositionPanels::cleanup()
{
    m_window.reset();
    m_requests.clear();
    m_labelShownAtRequest = false;
}

void tst_PositionPanels::record(const QString& request, const QWidget* panel)
{
    // Every request starts from cleared labels of its panel.
    for (const L* l : panel->findChildren<L*>())
        m_labelShownAtRequest = m_labelShownAtRequest || l->state() != L::Cleared;
    m_requests << request;
}

void tst_PositionPanels::setWorking()
{
    m_position->showRadarState(C::Working);
    m_limitations->showRadarState(C::Working);
    m_requests.clear();
}

void tst_PositionPanels::requests_data()
{
    QTest::addColumn<Action>("action");
    QTest::addColumn<QStringList>("expected");
    QTest::addColumn<bool>("reinitChecked");

    QTest::newRow("position write: the six values in pose order")
        << Action([](tst_PositionPanels* t) {
               const double values[] = {6.5, -1.25, 3, 10, -2.5, 0.75};
               for (int i = 0; i < 6; ++i)
                   t->spin(PositionNames.at(i) + "Spin")->setValue(values[i]);
               t->button("setPositionButton")->click();
           })
        << QStringList{"set position 6.5 -1.25 3 10 -2.5 0.75"} << false;
    QTest::newRow("position read") << Action([](tst_PositionPanels* t) {
        t->button("getPositionButton")->click();
    }) << QStringList{"get position"} << false;
    const QStringList defaultArea{
        "set speed 0 0 1",  "set speed 0 1 100", "set speed 0 2 0",  "set speed 0 3 10",
        "set treat 0 0 4",  "set point 0 0 5",   "set point 0 8 -10", "set point 0 2 100",
        "set point 0 10 10", "set point 0 1 100", "set point 0 9 -10", "set point 0 3 5",
        "set point 0 11 10", "reinit"};
    QTest::newRow("limitation write 5/100/-10/10: speeds, count, vertices 0 2 1 3, reinit")
        << Action([](tst_PositionPanels* t) { t->button("setPolygonButton")->click(); })
        << defaultArea << true;
    QTest::newRow("limitation write of edited bounds")
        << Action([](tst_PositionPanels* t) {
               const double values[] = {2.5, 55.5, 0.5, 12, 12, 180, -3.5, 7};
               for (int i = 0; i < 8; ++i)
                   t->spin(BoundNames.at(i) + "Spin")->setValue(values[i]);
               t->button("setPolygonButton")->click();
           })
        << QStringList{"set speed 0 0 2.5",  "set speed 0 1 55.5",  "set speed 0 2 0.5",
                       "set speed 0 3 12",   "set treat 0 0 4",     "set point 0 0 12",
                       "set point 0 8 -3.5", "set point 0 2 180",   "set point 0 10 7",
                       "set point 0 1 180",  "set point 0 9 -3.5",  "set point 0 3 12",
                       "set point 0 11 7",   "reinit"}
        << true;
    QTest::newRow("limitation read: the write's check box cleared")
        << Action([](tst_PositionPanels* t) {
               t->button("setPolygonButton")->click();
               t->m_requests.clear();
               t->button("getPolygonButton")->click();
           })
        << AreaRead << false;
    QTest::newRow("limitations switched on") << Action([](tst_PositionPanels* t) {
        t->button("enablePolygonButton")->click();
    }) << QStringList{"set usage 1"} << false;
    QTest::newRow("limitations switched off") << Action([](tst_PositionPanels* t) {
        t->m_limitations->showPolygonUsage(3);
        t->button("enablePolygonButton")->click();
    }) << QStringList{"set usage 0"} << false;
}

void tst_PositionPanels::requests()
{
    QFETCH(Action, action);
    setWorking();
    // Outcomes of earlier commands are on show.
    m_position->parHandler()->setState(SetPositionWidget::RollParameter, L::ErrorOccurred, true);
    m_limitations->parHandler()->setState(SetPolygonWidget::SpeedXMinSlot, L::ValueChanged, true);

    action(this);
    QTEST(m_requests, "expected");
    QVERIFY(!m_labelShownAtRequest);
    QTEST(m_window->findChild<QCheckBox*>("reinitCheck")->isChecked(), "reinitChecked");
}

void tst_PositionPanels::autoGet_data()
{
    QTest::addColumn<bool>("autoGet");
    QTest::addColumn<QList<int>>("states");
    QTest::addColumn<QStringList>("expected");

    const QStringList start = QStringList{"get position"} + AreaRead + QStringList{"get usage"};
    QTest::newRow("on: working reads position, area, then usage") << true << QList<int>{2} << start;
    QTest::newRow("off: working only asks whether the area is used")
        << false << QList<int>{2} << QStringList{"get usage"};
    QTest::newRow("busy, then working: once") << true << QList<int>{1, 2} << start;
    QTest::newRow("still working: no second read") << true << QList<int>{2, 2} << start;
    QTest::newRow("working again after a stop: again")
        << true << QList<int>{2, 0, 2} << start + start;
    QTest::newRow("busy, bad data, offline: nothing")
        << true << QList<int>{1, -1, 0} << QStringList{};
}

void tst_PositionPanels::autoGet()
{
    QFETCH(bool, autoGet);
    QFETCH(QList<int>, states);
    m_position->setAutoGetData(autoGet);
    m_limitations->setAutoGetData(autoGet);
    for (int state : states) {
        m_position->showRadarState(state);
        m_limitations->showRadarState(state);
    }
    QTEST(m_requests, "expected");
}

void tst_PositionPanels::positionReadBack_data()
{
    QTest::addColumn<QList<double>>("reported");
    QTest::addColumn<QList<double>>("shown");
    QTest::addColumn<QVariantList>("marks"); // the radar's value, for a clamped box

    const QVariant none;
    QTest::newRow("in range: as reported") << QList<double>{6.5, -1.25, 3, 10, -2.5, 0.75}
                                           << QList<double>{6.5, -1.25, 3, 10, -2.5, 0.75}
                                           << QVariantList{none, none, none, none, none, none};
    QTest::newRow("beyond the ends: clamped and marked")
        << QList<double>{30, 40, -26, 45, -90, 180} << QList<double>{20, 25, -25, 30, -30, 30}
        << QVariantList{30.0, 40.0, -26.0, 45.0, -90.0, 180.0};
    QTest::newRow("at the ends: not marked") << QList<double>{20, -25, 25, 30, -30, 29.999}
                                             << QList<double>{20, -25, 25, 30, -30, 30}
                                             << QVariantList{none, none, none, none, none, none};
    QTest::newRow("not a number leaves its box")
        << QList<double>{std::nan(""), 1, 2, 3, 4, 5} << QList<double>{5, 1, 2, 3, 4, 5}
        << QVariantList{none, none, none, none, none, none};
}

void tst_PositionPanels::positionReadBack()
{
    QFETCH(QList<double>, reported);
    QFETCH(QList<double>, shown);
    QFETCH(QVariantList, marks);
    setWorking();
    m_position->showCommandState(C::CmdGetHeight, C::Received, 0);
    QVERIFY(m_position->parHandler()->isDataTimerActive());

    const auto r = [&reported](int i) { return reported.at(i); };
    m_position->showPosition(r(0), r(1), r(2), r(3), r(4), r(5));
    for (int i = 0; i < 6; ++i) {
        QDoubleSpinBox* s = spin(PositionNames.at(i) + "Spin");
        QCOMPARE(s->value(), shown.at(i));
        QCOMPARE(ReadBackMark::reportedValue(s), marks.at(i));
        QCOMPARE(label(PositionNames.at(i))->state(), int(L::ReceivedFromRadar));
    }
    QVERIFY(!m_position->parHandler()->isDataTimerActive());
    QVERIFY(m_position->parHandler()->isHideTimerActive());
    QVERIFY(m_position->isEnabled());

    // The operator's next value clears the mark.
    spin("rollSpin")->setValue(1);
    QVERIFY(ReadBackMark::reportedValue(spin("rollSpin")).isNull());
    QVERIFY(spin("rollSpin")->toolTip().isEmpty());
    QCOMPARE(label("roll")->state(), int(L::ValueChanged));
}

void tst_PositionPanels::limitationAnswers_data()
{
    QTest::addColumn<Action>("answers");
    QTest::addColumn<QList<double>>("shown"); // the eight bounds
    QTest::addColumn<QList<int>>("labels"); // the eight bounds' labels, then the count's

    const QList<double> initial{1, 100, 0, 10, 5, 100, -10, 10};
    const QList<int> cleared{0, 0, 0, 0, 0, 0, 0, 0, 0};
    const int R = L::ReceivedFromRadar;
    QTest::newRow("vertex count 6 shows as 4, received")
        << Action([](tst_PositionPanels* t) { t->m_limitations->showPolygonTreatParam(0, 0, 6); })
        << initial << QList<int>{0, 0, 0, 0, 0, 0, 0, 0, R};
    QTest::newRow("speeds and the rectangle's defining corners")
        << Action([](tst_PositionPanels* t) {
               auto* p = t->m_limitations;
               p->showPolygonSpeedParam(0, 0, 2.5);
               p->showPolygonSpeedParam(0, 3, 12);
               p->showPolygonPointParam(0, 0, 7);
               p->showPolygonPointParam(0, 2, 120);
               p->showPolygonPointParam(0, 9, -4);
               p->showPolygonPointParam(0, 11, 6);
           })
        << QList<double>{2.5, 100, 0, 12, 7, 120, -4, 6} << QList<int>{R, 0, 0, R, R, R, R, R, 0};
    QTest::newRow("the other vertices' coordinates, other areas: not shown")
        << Action([](tst_PositionPanels* t) {
               auto* p = t->m_limitations;
               for (quint8 param : {1, 3, 8, 10, 4, 15})
                   p->showPolygonPointParam(0, param, 44);
               p->showPolygonPointParam(1, 0, 33);
               p->showPolygonSpeedParam(1, 0, 5);
               p->showPolygonSpeedParam(0, 4, 5);
               p->showPolygonTreatParam(1, 0, 6);
               p->showPolygonTreatParam(0, 1, 6);
           })
        << initial << cleared;
    QTest::newRow("beyond the ends: clamped and marked")
        << Action([](tst_PositionPanels* t) {
               t->m_limitations->showPolygonSpeedParam(0, 0, 20);
               t->m_limitations->showPolygonPointParam(0, 2, 300);
               QCOMPARE(ReadBackMark::reportedValue(t->spin("spdXminSpin")), QVariant(20.0));
               QCOMPARE(ReadBackMark::reportedValue(t->spin("posXmaxSpin")), QVariant(300.0));
               QVERIFY(t->spin("posXmaxSpin")->toolTip().contains("300"));
           })
        << QList<double>{10, 100, 0, 10, 5, 250, -10, 10} << QList<int>{R, 0, 0, 0, 0, R, 0, 0, 0};
}

void tst_PositionPanels::limitationAnswers()
{
    QFETCH(Action, answers);
    QFETCH(QList<double>, shown);
    QFETCH(QList<int>, labels);
    setWorking();
    answers(this);
    for (int i = 0; i < 8; ++i) {
        QCOMPARE(spin(BoundNames.at(i) + "Spin")->value(), shown.at(i));
        QCOMPARE(label(BoundNames.at(i))->state(), labels.at(i));
    }
    QCOMPARE(m_window->findChild<QSpinBox*>("pointCountSpin")->value(), 4);
    QCOMPARE(label("pointCount")->state(), labels.at(8));
    QVERIFY(m_requests.isEmpty());
}

void tst_PositionPanels::usageSwitch()
{
    QPushButton* enable = button("enablePolygonButton");
    QCOMPARE(enable->text(), QString("Enable limitations"));
    setWorking();
    m_limitations->showPolygonUsage(1);
    QVERIFY(enable->isChecked());
    QCOMPARE(enable->text(), QString("Disable limitations"));

    // Refused: the button goes back to what the radar last reported.
    enable->click();
    QVERIFY(!enable->isChecked());
    m_limitations->showCommandState(C::CmdSetPolygonUsage, C::Error, 5);
    QVERIFY(enable->isChecked());
    // Taken: read back, so the rest of the window hears of it too.
    enable->click();
    m_limitations->showCommandState(C::CmdSetPolygonUsage, C::Received, 0);
    QCOMPARE(m_requests, (QStringList{"set usage 0", "set usage 0", "get usage"}));

    // A radar that stops working has no area in use; nothing is sent.
    m_limitations->showPolygonUsage(1);
    m_requests.clear();
    m_limitations->showRadarState(C::Busy);
    QVERIFY(!enable->isChecked());
    QCOMPARE(enable->text(), QString("Enable limitations"));
    QCOMPARE(m_limitations->usageMask(), quint8(0));
    m_limitations->showCommandState(C::CmdSetPolygonUsage, C::Error, 5);
    QVERIFY(!enable->isChecked());
    QVERIFY(m_requests.isEmpty());
}

void tst_PositionPanels::enabling_data()
{
    QTest::addColumn<bool>("limitations");
    QTest::addColumn<int>("radarState");
    QTest::addColumn<int>("command"); // reported after the radar state, 0 for none
    QTest::addColumn<int>("commandState");
    QTest::addColumn<bool>("enabled");

    using P = RadarParamNumbering;
    QTest::newRow("position: working") << false << 2 << 0 << 0 << true;
    QTest::newRow("position: busy") << false << 1 << 0 << 0 << false;
    QTest::newRow("position: read acknowledged, values awaited")
        << false << 2 << int(C::CmdGetAzimuth) << int(C::Received) << false;
    QTest::newRow("position: write acknowledged")
        << false << 2 << int(C::CmdSetRoll) << int(C::Received) << true;
    QTest::newRow("limitations: working") << true << 2 << 0 << 0 << true;
    QTest::newRow("limitations: bad data") << true << -1 << 0 << 0 << false;
    QTest::newRow("limitations: usage switch queued")
        << true << 2 << int(C::CmdSetPolygonUsage) << int(C::Queued) << false;
    QTest::newRow("limitations: reinit in progress")
        << true << 2 << int(C::CmdReinitPolygons) << int(C::InProgress) << false;
    QTest::newRow("limitations: Ymax of vertex 3 in progress")
        << true << 2 << P::fullPolygonCmdId(C::CmdSetPolygonPointParam, 0, 11)
        << int(C::InProgress) << false;
    QTest::newRow("limitations: another area's command")
        << true << 2 << P::fullPolygonCmdId(C::CmdSetPolygonPointParam, 1, 11)
        << int(C::InProgress) << true;
}

void tst_PositionPanels::enabling()
{
    QFETCH(bool, limitations);
    QFETCH(int, radarState);
    QFETCH(int, command);
    QFETCH(int, commandState);
    QWidget* p = limitations ? static_cast<QWidget*>(m_limitations) : m_position;
    QVERIFY(!p->isEnabled()); // nothing works before the radar does
    QMetaObject::invokeMethod(p, "showRadarState", Q_ARG(int, radarState));
    if (command)
        QMetaObject::invokeMethod(p, "showCommandState", Q_ARG(int, command),
                                  Q_ARG(int, commandState), Q_ARG(int, 0));
    QTEST(p->isEnabled(), "enabled");
    QTEST(p->parentWidget()->isEnabled(), "enabled"); // the whole titled box
}

QTEST_MAIN(tst_PositionPanels)
#include "tst_positionpanels.moc"
