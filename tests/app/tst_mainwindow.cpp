#include "collapsiblegroupbox.h"
#include "imitatorobjectwidget.h"
#include "loopbackserver.h"
#include "mainwindow.h"
#include "mainwindowfixture.h"
#include "orvexcontrol.h"
#include "orvexserialdunvelprotocolclient.h"
#include "orvexserialpakorprotocolclient.h"
#include "questionanswerer.h"
#include "serverstatewidget.h"
#include "testrecords.h"
#include "workprofilehandler.h"

#include <QAction>
#include <QGroupBox>
#include <QInputDialog>
#include <QJsonDocument>
#include <QMenu>
#include <QPointer>
#include <QtTest>

#include <memory>

// The main window against a real loopback radar server: layout through the profile,
// client replacement and the requested-result rule.
class tst_MainWindow : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void clientFollowsTheProfile();
    void layout_data();
    void layout();
    void switchingProfilesCollapsesAndLaysOutOnce();
    void emptyServerAddressIsStored();
    void requestedResults_data();
    void requestedResults();
    void imitatorModeSwapsTheSchemeForItsSpeed();
    void closingSavesTheProfiles();
    void keepsTheOperatorsSize();

private:
    // The window on the default profile, pointed at the loopback server; shown unless
    // the size is empty.
    bool openWindow(const QSize& size = QSize(1200, 800))
    {
        return m_fx->open(m_server->url(), {}, size);
    }
    bool openConnectedWindow();
    QJsonValue profileValue(const QString& path) const { return m_fx->profileValue(path); }
    bool waitForLayout();
    QAction* menuAction(const QString& text) const { return m_fx->menuAction(text); }
    QAction* controlAction(int control) const;
    QWidget* child(const QString& name) const { return m_fx->window->findChild<QWidget*>(name); }

    std::unique_ptr<MainWindowFixture> m_fx;
    std::unique_ptr<LoopbackServer> m_server;
};

void tst_MainWindow::init()
{
    m_fx = std::make_unique<MainWindowFixture>();
    m_server = std::make_unique<LoopbackServer>();
}

void tst_MainWindow::cleanup()
{
    m_fx.reset();
    m_server.reset();
}

bool tst_MainWindow::openConnectedWindow()
{
    return openWindow() && m_server->waitForClient()
           && QTest::qWaitFor([this] { return m_fx->window->radarClient()->isConnected(); });
}

bool tst_MainWindow::waitForLayout()
{
    // A change is laid out in two 1 ms steps; a later change may schedule more.
    return QTest::qWaitFor([this] { return !m_fx->window->isLayoutPending(); });
}

QAction* tst_MainWindow::controlAction(int control) const
{
    for (QAction* action : menuAction("Visible &controls")->menu()->actions()) {
        if (action->isCheckable() && action->data().toInt() == control)
            return action;
    }
    return nullptr;
}

void tst_MainWindow::layout_data()
{
    QTest::addColumn<bool>("vertical");
    QTest::addColumn<bool>("table");
    QTest::addColumn<QList<int>>("hidden"); // boxes the operator hides through the menu
    QTest::addColumn<int>("height");
    QTest::addColumn<int>("columns");
    QTest::addColumn<QString>("shown"); // the columns of boxes shown

    // A tall window has room for the boxes of column 2 under those of column 1.
    const QList<int> none;
    QTest::newRow("vertical, tall window: one column") << true << false << none << 1700 << 1 << "1";
    QTest::newRow("vertical, table shown: two columns") << true << true << none << 800 << 2 << "12";
    QTest::newRow("horizontal: three columns") << false << false << none << 800 << 3 << "123";
    QTest::newRow("horizontal, table shown: two columns")
        << false << true << none << 800 << 2 << "12";
    QList<int> boxes{ConfigureLimitationsControl};
    QTest::newRow("limitations hidden: their column too")
        << false << false << boxes << 800 << 3 << "13";
    boxes << GeneralInfoControl << SendCommandsControl << FineTuningControl
          << SaveAndRestartControl;
    QTest::newRow("radar position alone: the last column only")
        << false << false << boxes << 800 << 3 << "3";
    QTest::newRow("every box hidden: no controls at all")
        << false << false << (boxes << SetRadarPositionControl) << 800 << 3 << "";
}

void tst_MainWindow::layout()
{
    QFETCH(bool, vertical);
    QFETCH(bool, table);
    QFETCH(QList<int>, hidden);
    QFETCH(int, height);
    QFETCH(int, columns);
    QFETCH(QString, shown);

    QVERIFY(openWindow(QSize(1200, height)));
    m_fx->window->profileHandler()->setDrawVertical(vertical);
    if (table)
        controlAction(ObjectsTableControl)->trigger();
    for (int control : hidden)
        controlAction(control)->trigger();
    QVERIFY(waitForLayout());
    for (int control : hidden)
        QCOMPARE(profileValue(QString("view/controls/%1/visible").arg(control)).toBool(), false);
    QCOMPARE(m_fx->window->columnCount(), columns);
    QString columnsShown;
    for (const char* column : {"1", "2", "3"})
        columnsShown += child(QString("column%1Widget").arg(column))->isVisible() ? column : "";
    QCOMPARE(columnsShown, shown);
    QCOMPARE(child("controlsWidget")->isVisible(), !shown.isEmpty());
    QCOMPARE(child("spacer0Widget")->isVisible(), !shown.isEmpty() && vertical == table);
    QCOMPARE(child("objectsTableBox")->isVisible(), table);
    QCOMPARE(m_fx->window->findChild<ImitatorObjectWidget*>()->twoLines(), vertical);
    QCOMPARE(controlAction(ObjectsTableControl)->isChecked(), table);
    QVERIFY(child("objectsMetaWidget")->isVisible());
    QCOMPARE(child("objectsMetaWidget")->maximumSize(), QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
    if (shown.isEmpty())
        return;
    // Vertically the scheme stands left of the controls and the table above them;
    // horizontally the scheme lies across the top and the table left of the controls.
    auto at = [this](const char* name) {
        QWidget* w = child(name);
        return QRect(w->mapTo(m_fx->window.get(), QPoint(0, 0)), w->size());
    };
    const QRect area = at("objectsMetaWidget");
    const QRect controls = at("controlsWidget");
    const QRect box = at("objectsTableBox");
    QVERIFY(vertical ? area.right() < controls.left() : area.bottom() < controls.top());
    if (table)
        QVERIFY(vertical ? box.bottom() < controls.top() : box.right() < controls.left());
}

void tst_MainWindow::switchingProfilesCollapsesAndLaysOutOnce()
{
    QVERIFY(openWindow());
    QVERIFY(waitForLayout());
    WorkProfileHandler* handler = m_fx->window->profileHandler();
    auto* box = m_fx->window->findChild<CollapsibleGroupBox*>("sendCommandsBox");
    QVERIFY(!box->isCollapsed());
    // A click on the title asks the profile, which collapses the box.
    QTest::mouseClick(box, Qt::LeftButton, {}, box->titleArea().center());
    QVERIFY(box->isCollapsed());
    QCOMPARE(profileValue("view/controls/4/collapsed").toBool(), true);
    handler->setDrawVertical(false); // the second profile differs in layout too
    const int second = handler->appendProfile(-1);
    QVERIFY(waitForLayout());

    // The second profile expands the box. A re-layout starts by hiding the scheme area:
    // it stays shown while the profile's values arrive, and the end of the profile lays
    // the window out.
    QWidget* area = child("objectsMetaWidget");
    bool shownWhileApplying = false;
    QObject ctx;
    // The last value of a profile; the window's own handler of the end follows.
    connect(handler, &WorkProfileHandler::limitationsPresetsChanged, &ctx,
            [&] { shownWhileApplying = area->isVisible(); });
    handler->applyProfile(second);
    QVERIFY(!box->isCollapsed());
    QVERIFY(shownWhileApplying);
    QVERIFY(!area->isVisible() && m_fx->window->isLayoutPending());
    QVERIFY(waitForLayout());
    QVERIFY(area->isVisible());
    // Back to the first profile, the box is collapsed again.
    handler->applyProfile(0);
    QVERIFY(box->isCollapsed());
}

void tst_MainWindow::clientFollowsTheProfile()
{
    QVERIFY(openWindow(QSize()));
    QCOMPARE(m_fx->window->windowTitle(), QString("Dunvel Orvex Road App — Default profile"));
    QVERIFY(menuAction("&Paint objects in different colors")->isChecked());
    // The scheme and the imitator's speed were forced visible into the profile.
    QVERIFY(profileValue("view/controls/1/visible").toBool());
    QVERIFY(profileValue("view/controls/3/visible").toBool());
    // SerD with forcing on: the server hears the protocol as the client connects.
    QPointer<IOrvexClient> old = m_fx->window->radarClient();
    QVERIFY(qobject_cast<OrvexSerialDunvelProtocolClient*>(old));
    QVERIFY(menuAction("&0. Serial, type D (SerD)")->isChecked());
    QVERIFY(m_server->waitForClient());
    QCOMPARE(old->serverUrl(), m_server->url());
    QTRY_COMPARE(m_server->textMessages.size(), 1);
    QCOMPARE(QJsonDocument::fromJson(m_server->textMessages.first().toUtf8()).object(),
             (QJsonObject{{"command", 2}, {"radar_protocol", 0}}));

    // Another protocol: a new client on the same address, the old one deleted later.
    QSignalSpy texts(m_server.get(), &LoopbackServer::textReceived);
    const int connections = m_server->connectionCount;
    menuAction("&1. Serial, type P (SerP)")->trigger();
    IOrvexClient* replacement = m_fx->window->radarClient();
    QVERIFY(qobject_cast<OrvexSerialPakorProtocolClient*>(replacement));
    QVERIFY(old);
    QTRY_VERIFY(old.isNull());
    QCOMPARE(profileValue("connection/radar_protocol").toInt(), 1);
    QTRY_COMPARE(m_server->connectionCount, connections + 1);
    QCOMPARE(replacement->serverUrl(), m_server->url());
    QTRY_COMPARE(texts.count(), 1);
    QCOMPARE(QJsonDocument::fromJson(texts.last().at(0).toString().toUtf8()).object(),
             (QJsonObject{{"command", 2}, {"radar_protocol", 1}}));

    // Without forcing nothing is sent.
    menuAction("&Force server to change protocol")->trigger();
    QCOMPARE(profileValue("connection/protocol_forcing").toBool(), false);
    texts.clear();
    menuAction("&0. Serial, type D (SerD)")->trigger();
    QTRY_COMPARE(m_server->connectionCount, connections + 2);
    QVERIFY(!QTest::qWaitFor([&texts] { return !texts.isEmpty(); }, 300));
}

void tst_MainWindow::emptyServerAddressIsStored()
{
    QVERIFY(openConnectedWindow());
    // Answers the address dialog with the text, confirming or cancelling.
    auto answer = [this](const QString& text, bool confirm) {
        QTimer::singleShot(0, this, [text, confirm] {
            auto* dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            QCOMPARE(dialog->windowTitle(), QString("Radar server — Default profile"));
            dialog->setTextValue(text);
            confirm ? dialog->accept() : dialog->reject();
        });
        menuAction("&Choose radar server")->trigger();
    };
    answer(QString(), true);
    QCOMPARE(profileValue("connection/radar_server_url").toString(), QString());
    // The old link is gone and no new one can be made.
    QVERIFY(!m_fx->window->radarClient()->isConnected());
    QTRY_COMPARE(m_server->client(), nullptr);
    // Cancelling changes nothing.
    answer("ws://somewhere/", false);
    QCOMPARE(profileValue("connection/radar_server_url").toString(), QString());
}

// The radar's hardware name "SIMRADAR" in four frames on the SerD response id: response
// codes 0x6A to 0x6D, then up to six characters each, the first in the lowest byte.
static const QByteArray HardwareInfo
    = TestRecords::frame(0x500, 0x4441524D4953006A) + TestRecords::frame(0x500, 0x5241006B)
      + TestRecords::frame(0x500, 0x6C) + TestRecords::frame(0x500, 0x6D);

void tst_MainWindow::requestedResults_data()
{
    QTest::addColumn<bool>("request");
    QTest::addColumn<bool>("radarStops");
    QTest::addColumn<int>("boxes");
    QTest::newRow("answers nobody asked for open no box") << false << false << 0;
    QTest::newRow("the operator's request opens one box, once") << true << false << 1;
    QTest::newRow("a request is forgotten when the radar stops") << true << true << 0;
}

void tst_MainWindow::requestedResults()
{
    QFETCH(bool, request);
    QFETCH(bool, radarStops);
    QFETCH(int, boxes);
    QVERIFY(openConnectedWindow());
    IOrvexClient* client = m_fx->window->radarClient();
    QSignalSpy info(client, &IOrvexClient::hardwareInfo);
    QSignalSpy states(client, &IOrvexClient::radarStateChanged);
    QuestionAnswerer answerer(QMessageBox::Ok);
    auto answers = [&](int count) {
        for (int i = 0; i < count; ++i) {
            m_server->sendBinary(HardwareInfo);
            QVERIFY(info.wait());
        }
        // The window's handler is queued: give it its turn.
        QVERIFY(!QTest::qWaitFor([&] { return answerer.count > boxes; }, 300));
    };
    answers(3); // the third message in a row puts the radar online, busy
    QCOMPARE(answerer.count, 0);
    QCOMPARE(states.count(), 1);
    if (request)
        m_fx->window->onWindowedCommandRequested(IOrvexClient::CmdGetHardwareInfo);
    if (radarStops) // two seconds without a message
        QVERIFY(states.wait(IOrvexClient::RadarOfflineTimeoutMs + 1000));
    answers(2);
    QCOMPARE(answerer.count, boxes);
    if (boxes > 0)
        QCOMPARE(answerer.title + ": " + answerer.text, QString("Hardware info: SIMRADAR"));
}

void tst_MainWindow::imitatorModeSwapsTheSchemeForItsSpeed()
{
    QVERIFY(openConnectedWindow());
    auto* imitatorBox = m_fx->window->findChild<QGroupBox*>("imitatorObjectBox");
    QSignalSpy modes(m_fx->window->radarClient(), &IOrvexClient::imitatorModeChanged);
    // The radar answers a read of its imitator mode (group 151, parameter 0).
    auto imitatorMode = [this, &modes](quint32 mode) {
        m_server->sendBinary(TestRecords::frame(0x500, 0x2B1B)
                             + TestRecords::frame(0x500, 0x0002970100002B1C)
                             + TestRecords::frame(0x500, quint64(mode) << 32 | 0x2B1D));
        return modes.wait();
    };
    QVERIFY(imitatorMode(2));
    QCOMPARE(imitatorBox->title(), QString(" Speed generated with imitator, type 2  "));
    QTRY_VERIFY(imitatorBox->isVisible());
    QVERIFY(!child("roadObjectsBox")->isVisible());
    QVERIFY(imitatorMode(0));
    QCOMPARE(imitatorBox->title(), QString(" Speed generated with imitator  "));
    QTRY_VERIFY(child("roadObjectsBox")->isVisible());
    QVERIFY(!imitatorBox->isVisible());
    // The third message put the radar online; once silent it has no imitator mode.
    QVERIFY(imitatorMode(1));
    QTRY_VERIFY(imitatorBox->isVisible());
    QTRY_VERIFY_WITH_TIMEOUT(!imitatorBox->isVisible(), IOrvexClient::RadarOfflineTimeoutMs + 1000);
}

void tst_MainWindow::closingSavesTheProfiles()
{
    QVERIFY(openWindow());
    m_fx->window->profileHandler()->renameProfile(0, "Night shift");
    QPointer<IOrvexClient> client = m_fx->window->radarClient();
    QVERIFY(m_fx->window->close());
    QVERIFY(!m_fx->window->radarClient());
    QTRY_VERIFY(client.isNull());
    QCOMPARE(m_fx->savedValue("name").toString(), QString("Night shift"));
}

void tst_MainWindow::keepsTheOperatorsSize()
{
    // A report far longer than the status bar: the window keeps its width and cuts the
    // report short.
    QVERIFY(openConnectedWindow());
    QVERIFY(waitForLayout());
    const QSize size = m_fx->window->size();
    const QString port = "/dev/serial/by-id/usb-" + QString(300, 'x');
    m_server->sendText(QJsonDocument(QJsonObject{{"command", IOrvexClient::ServerStateReport},
                                                 {"result", 0},
                                                 {"server_state", 5},
                                                 {"port_name", port}})
                           .toJson());
    auto* state = m_fx->window->findChild<ServerStateWidget*>();
    QTRY_VERIFY(state->isVisible() && state->text().contains(port));
    QVERIFY(state->width() < state->fontMetrics().horizontalAdvance(state->text()));
    QVERIFY(m_fx->window->minimumSizeHint().width() <= size.width());
    QCOMPARE(m_fx->window->size(), size);
}

QTEST_MAIN(tst_MainWindow)
#include "tst_mainwindow.moc"
