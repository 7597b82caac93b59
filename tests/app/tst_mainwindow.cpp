#include "collapsiblegroupbox.h"
#include "loopbackserver.h"
#include "mainwindow.h"
#include "orvexcontrol.h"
#include "orvexserialdunvelprotocolclient.h"
#include "orvexserialpakorprotocolclient.h"
#include "questionanswerer.h"
#include "serverstatewidget.h"
#include "testrecords.h"
#include "workprofilehandler.h"

#include <QActionGroup>
#include <QGroupBox>
#include <QInputDialog>
#include <QJsonDocument>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <QStatusBar>
#include <QTemporaryDir>
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

    void startsFromTheProfile();
    void columnsFollowTheTableAndOrientation_data();
    void columnsFollowTheTableAndOrientation();
    void hidingBoxesHidesColumns();
    void collapseRoundTripsThroughTheProfile();
    void profileApplicationLaysOutOnce();
    void protocolSwitchReplacesTheClient();
    void emptyServerAddressIsStored();
    void unrequestedHardwareInfoOpensNoMessageBox();
    void imitatorModeSwapsTheSchemeForItsSpeed();
    void closingSavesTheProfiles();
    void keepsTheOperatorsSize();

private:
    void writeSettings(const QJsonObject& profile);
    // The window on the default profile, pointed at the loopback server, shown.
    bool openWindow();
    // A value of the current profile by its slash-separated path.
    QJsonValue profileValue(const QString& path) const;
    bool waitForLayout();
    QAction* menuAction(const QString& menu, const QString& text) const;
    QWidget* child(const char* name) const { return m_window->findChild<QWidget*>(name); }

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_previousDir;
    std::unique_ptr<LoopbackServer> m_server;
    std::unique_ptr<MainWindow> m_window;
};

void tst_MainWindow::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    m_previousDir = QDir::currentPath();
    QDir::setCurrent(m_dir->path());
    m_server = std::make_unique<LoopbackServer>();
}

void tst_MainWindow::cleanup()
{
    m_window.reset();
    m_server.reset();
    QDir::setCurrent(m_previousDir);
    m_dir.reset();
}

void tst_MainWindow::writeSettings(const QJsonObject& changes)
{
    // The default profile, pointed at the loopback server, with the given changes.
    QJsonObject profile = WorkProfileHandler::defaultProfile();
    QJsonObject connection = profile.value("connection").toObject();
    connection.insert("radar_server_url", m_server->url().toString());
    profile.insert("connection", connection);
    for (auto it = changes.begin(); it != changes.end(); ++it)
        profile.insert(it.key(), it.value());
    QFile file(WorkProfileHandler::SettingsFilePath);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(
        QJsonDocument(QJsonObject{{"profiles", QJsonArray{profile}}, {"current_id", 0}}).toJson());
}

bool tst_MainWindow::openWindow()
{
    writeSettings({});
    if (QTest::currentTestFailed())
        return false;
    m_window = std::make_unique<MainWindow>();
    m_window->show();
    return QTest::qWaitForWindowExposed(m_window.get());
}

QJsonValue tst_MainWindow::profileValue(const QString& path) const
{
    WorkProfileHandler* handler = m_window->profileHandler();
    QJsonValue value = handler->profile(handler->currentProfileId());
    for (const QString& key : path.split('/'))
        value = value.toObject().value(key);
    return value;
}

bool tst_MainWindow::waitForLayout()
{
    // A change is laid out in two 1 ms steps; a later change may schedule more.
    return QTest::qWaitFor([this] { return !m_window->isLayoutPending(); });
}

QAction* tst_MainWindow::menuAction(const QString& menu, const QString& text) const
{
    for (QAction* top : m_window->menuBar()->actions()) {
        if (top->text() != menu || !top->menu())
            continue;
        QList<QMenu*> menus{top->menu()};
        while (!menus.isEmpty()) {
            QMenu* m = menus.takeFirst();
            for (QAction* action : m->actions()) {
                if (action->text() == text)
                    return action;
                if (action->menu())
                    menus.append(action->menu());
            }
        }
    }
    return nullptr;
}

void tst_MainWindow::startsFromTheProfile()
{
    writeSettings({});
    m_window = std::make_unique<MainWindow>();
    QCOMPARE(m_window->windowTitle(), QString("Dunvel Orvex Road App — Default profile"));
    QCOMPARE(m_window->font().family(), QString("Sans"));
    QVERIFY(qobject_cast<OrvexSerialDunvelProtocolClient*>(m_window->radarClient()));
    QVERIFY(m_server->waitForClient());
    QCOMPARE(m_window->radarClient()->serverUrl(), m_server->url());

    // Forcing is on in the default profile: the server hears the protocol at connect.
    QTRY_COMPARE(m_server->textMessages.size(), 1);
    QCOMPARE(QJsonDocument::fromJson(m_server->textMessages.first().toUtf8()).object(),
             (QJsonObject{{"command", 2}, {"radar_protocol", 0}}));

    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    QTRY_VERIFY(child("objectsMetaWidget")->isVisible());
    QVERIFY(child("roadObjectsBox")->isVisible());
    QVERIFY(!child("imitatorObjectBox")->isVisible()); // imitator off
    QVERIFY(!child("objectsTableBox")->isVisible());
    QVERIFY(child("controlsWidget")->isVisible());
    // Ticks follow the profile.
    QVERIFY(menuAction("&Protocol", "&0. Serial, type D (SerD)")->isChecked());
    QVERIFY(menuAction("&Protocol", "&Force server to change protocol")->isChecked());
    QVERIFY(!menuAction("&View", "Road &objects")->isChecked());
    QVERIFY(menuAction("&View", "Send &commands")->isChecked());
    QVERIFY(menuAction("&View", "&Paint objects in different colors")->isChecked());
    // Controls 1 and 3 were forced visible into the profile at start-up.
    QVERIFY(profileValue("view/controls/1/visible").toBool());
    QVERIFY(profileValue("view/controls/3/visible").toBool());
}

void tst_MainWindow::columnsFollowTheTableAndOrientation_data()
{
    QTest::addColumn<bool>("vertical");
    QTest::addColumn<bool>("table");
    QTest::addColumn<int>("height");
    QTest::addColumn<int>("columns");

    // A tall window has room for the boxes of column 2 under those of column 1.
    QTest::newRow("vertical, tall window: one column") << true << false << 1700 << 1;
    QTest::newRow("vertical, table shown: two columns") << true << true << 800 << 2;
    QTest::newRow("horizontal: three columns") << false << false << 800 << 3;
    QTest::newRow("horizontal, table shown: two columns") << false << true << 800 << 2;
}

void tst_MainWindow::columnsFollowTheTableAndOrientation()
{
    QFETCH(bool, vertical);
    QFETCH(bool, table);
    QFETCH(int, height);
    QFETCH(int, columns);

    writeSettings({});
    m_window = std::make_unique<MainWindow>();
    m_window->resize(1200, height);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    WorkProfileHandler* handler = m_window->profileHandler();
    handler->setDrawVertical(vertical);
    handler->setControlVisible(ObjectsTableControl, table);
    QVERIFY(waitForLayout());
    QCOMPARE(m_window->columnCount(), columns);
    QCOMPARE(child("objectsTableBox")->isVisible(), table);
    QCOMPARE(menuAction("&View", "Road &objects")->isChecked(), table);
    QVERIFY(child("objectsMetaWidget")->isVisible());
    QCOMPARE(child("objectsMetaWidget")->maximumSize(), QSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX));
    // Where the scheme and the table sit: vertically the scheme stands left of the
    // controls and the table above them; horizontally the scheme lies across the top
    // and the table left of the controls.
    auto at = [this](const char* name) {
        QWidget* w = child(name);
        return QRect(w->mapTo(m_window.get(), QPoint(0, 0)), w->size());
    };
    const QRect area = at("objectsMetaWidget");
    const QRect controls = at("controlsWidget");
    if (vertical)
        QVERIFY(area.right() < controls.left());
    else
        QVERIFY(area.bottom() < controls.top());
    if (table) {
        const QRect box = at("objectsTableBox");
        if (vertical)
            QVERIFY(box.bottom() < controls.top());
        else
            QVERIFY(box.right() < controls.left());
    }
}

void tst_MainWindow::hidingBoxesHidesColumns()
{
    QVERIFY(openWindow());
    WorkProfileHandler* handler = m_window->profileHandler();
    handler->setDrawVertical(false); // three columns: column 2 holds the limitations
    QVERIFY(waitForLayout());
    QCOMPARE(m_window->columnCount(), 3);

    // Through the menu, as the operator does it.
    QAction* limitations = menuAction("&View", "Configure &limitations");
    limitations->trigger();
    QVERIFY(waitForLayout());
    QVERIFY(!child("column2Widget")->isVisible());
    QVERIFY(child("column1Widget")->isVisible());
    QCOMPARE(profileValue("view/controls/5/visible").toBool(), false);

    for (int control : {GeneralInfoControl, SendCommandsControl, FineTuningControl,
                        SetRadarPositionControl, SaveAndRestartControl})
        handler->setControlVisible(control, false);
    QVERIFY(waitForLayout());
    QVERIFY(!child("controlsWidget")->isVisible());
    QVERIFY(!child("spacer0Widget")->isVisible());

    handler->setControlVisible(SetRadarPositionControl, true);
    QVERIFY(waitForLayout());
    QVERIFY(child("controlsWidget")->isVisible());
    QVERIFY(child("column3Widget")->isVisible());
    QVERIFY(!child("column1Widget")->isVisible());
}

void tst_MainWindow::collapseRoundTripsThroughTheProfile()
{
    QVERIFY(openWindow());
    QVERIFY(waitForLayout());
    auto* box = m_window->findChild<CollapsibleGroupBox*>("sendCommandsBox");
    QVERIFY(box && !box->isCollapsed());

    // A click on the title asks the profile, which collapses the box.
    const QPoint title = box->titleArea().center();
    QTest::mouseClick(box, Qt::LeftButton, {}, title);
    QVERIFY(box->isCollapsed());
    QCOMPARE(profileValue("view/controls/4/collapsed").toBool(), true);

    // Another profile expands it, switching back collapses it again.
    WorkProfileHandler* handler = m_window->profileHandler();
    const int second = handler->appendProfile(-1);
    handler->applyProfile(second);
    QVERIFY(!box->isCollapsed());
    handler->applyProfile(0);
    QVERIFY(box->isCollapsed());
}

void tst_MainWindow::profileApplicationLaysOutOnce()
{
    QVERIFY(openWindow());
    QVERIFY(waitForLayout());

    // A re-layout starts by hiding and shrinking the scheme area; count how often that
    // happens while a profile with many changes is applied, and after it.
    WorkProfileHandler* handler = m_window->profileHandler();
    const int second = handler->appendProfile(-1);
    handler->setDrawVertical(false); // the second profile differs from the first
    QVERIFY(waitForLayout());

    QWidget* area = child("objectsMetaWidget");
    int shrinksDuringApply = 0;
    int shrinksAfterApply = 0;
    bool applying = false;
    QObject ctx;
    connect(handler, &WorkProfileHandler::applyingProfileStarted, &ctx, [&] { applying = true; });
    // The last value of a profile; the window's own handler of the end follows.
    connect(handler, &WorkProfileHandler::limitationsPresetsChanged, &ctx,
            [&] { applying = false; });
    struct Watch : QObject
    {
        std::function<void()> onHide;
        bool eventFilter(QObject*, QEvent* e) override
        {
            if (e->type() == QEvent::Hide)
                onHide();
            return false;
        }
    } watch;
    watch.onHide = [&] { (applying ? shrinksDuringApply : shrinksAfterApply)++; };
    area->installEventFilter(&watch);

    handler->applyProfile(second);
    QVERIFY(waitForLayout());
    QCOMPARE(shrinksDuringApply, 0);
    QCOMPARE(shrinksAfterApply, 1);
    QVERIFY(area->isVisible());
}

void tst_MainWindow::protocolSwitchReplacesTheClient()
{
    writeSettings({});
    m_window = std::make_unique<MainWindow>();
    QVERIFY(m_server->waitForClient());
    QTRY_VERIFY(m_window->radarClient()->isConnected());
    // The first client's own protocol request must be in before counting.
    QTRY_COMPARE(m_server->textMessages.size(), 1);
    QPointer<IOrvexClient> old = m_window->radarClient();
    QSignalSpy texts(m_server.get(), &LoopbackServer::textReceived);
    const int connections = m_server->connectionCount;

    menuAction("&Protocol", "&1. Serial, type P (SerP)")->trigger();
    IOrvexClient* replacement = m_window->radarClient();
    QVERIFY(qobject_cast<OrvexSerialPakorProtocolClient*>(replacement));
    QVERIFY(old); // deleted later, never at once
    QTRY_VERIFY(old.isNull());
    QCOMPARE(profileValue("connection/radar_protocol").toInt(), 1);
    QVERIFY(menuAction("&Protocol", "&1. Serial, type P (SerP)")->isChecked());

    // The same address again, and the server is told to switch on connecting.
    QTRY_COMPARE(m_server->connectionCount, connections + 1);
    QCOMPARE(replacement->serverUrl(), m_server->url());
    QTRY_COMPARE(texts.count(), 1);
    QCOMPARE(QJsonDocument::fromJson(texts.last().at(0).toString().toUtf8()).object(),
             (QJsonObject{{"command", 2}, {"radar_protocol", 1}}));

    // Without forcing nothing is sent.
    menuAction("&Protocol", "&Force server to change protocol")->trigger();
    QCOMPARE(profileValue("connection/protocol_forcing").toBool(), false);
    texts.clear();
    menuAction("&Protocol", "&0. Serial, type D (SerD)")->trigger();
    QTRY_COMPARE(m_server->connectionCount, connections + 2);
    QVERIFY(!texts.wait(300));
}

void tst_MainWindow::emptyServerAddressIsStored()
{
    QVERIFY(openWindow());
    QVERIFY(m_server->waitForClient());

    // Answer the address dialog with an empty field.
    QString dialogTitle;
    QTimer::singleShot(0, this, [&dialogTitle] {
        auto* dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        dialogTitle = dialog->windowTitle();
        dialog->setTextValue(QString());
        dialog->accept();
    });
    menuAction("&Server", "&Choose radar server")->trigger();
    QCOMPARE(dialogTitle, QString("Radar server — Default profile"));
    QCOMPARE(profileValue("connection/radar_server_url").toString(), QString());
    // The old link is gone and no new one can be made.
    QVERIFY(!m_window->radarClient()->isConnected());
    QTRY_COMPARE(m_server->client(), nullptr);

    // Cancelling changes nothing.
    QTimer::singleShot(0, this, [] {
        if (auto* dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget())) {
            dialog->setTextValue("ws://somewhere/");
            dialog->reject();
        }
    });
    menuAction("&Server", "&Choose radar server")->trigger();
    QCOMPARE(profileValue("connection/radar_server_url").toString(), QString());
}

void tst_MainWindow::unrequestedHardwareInfoOpensNoMessageBox()
{
    QVERIFY(openWindow());
    QVERIFY(m_server->waitForClient());
    QTRY_VERIFY(m_window->radarClient()->isConnected());

    // Four hardware-information frames ("SIMRADAR") on the SerD response id.
    auto infoFrames = [] {
        QByteArray frames;
        const QByteArray text("SIMRADAR");
        for (int f = 0; f < 4; ++f) {
            quint64 payload = quint16(0x6A + f);
            for (int i = 0; i < 6 && f * 6 + i < text.size(); ++i)
                payload |= quint64(quint8(text.at(f * 6 + i))) << (16 + 8 * i);
            frames += TestRecords::frame(0x500, payload);
        }
        return frames;
    };
    auto* client = m_window->radarClient();
    QSignalSpy info(client, &IOrvexClient::hardwareInfo);
    m_server->sendBinary(infoFrames());
    QVERIFY(info.wait());
    // The window's handler is queued: give it its turn; no box may open.
    {
        QuestionAnswerer answerer(QMessageBox::Ok);
        QVERIFY(!QTest::qWaitFor([&answerer] { return answerer.count > 0; }, 300));
    }

    // Asked for by the operator, the answer shows in a message box, once.
    m_window->onWindowedCommandRequested(IOrvexClient::CmdGetHardwareInfo);
    QuestionAnswerer answerer(QMessageBox::Ok);
    m_server->sendBinary(infoFrames());
    QTRY_COMPARE(answerer.count, 1);
    QCOMPARE(answerer.title, QString("Hardware info"));
    QCOMPARE(answerer.text, QString("SIMRADAR"));
    m_server->sendBinary(infoFrames());
    QVERIFY(info.wait());
    QVERIFY(!QTest::qWaitFor([&answerer] { return answerer.count > 1; }, 300));
}

void tst_MainWindow::imitatorModeSwapsTheSchemeForItsSpeed()
{
    QVERIFY(openWindow());
    QVERIFY(m_server->waitForClient());
    QTRY_VERIFY(m_window->radarClient()->isConnected());
    auto* imitatorBox = m_window->findChild<QGroupBox*>("imitatorObjectBox");
    auto* schemeBox = m_window->findChild<QGroupBox*>("roadObjectsBox");

    // The radar answers a read of its imitator mode (group 151, parameter 0): type 2.
    auto imitatorMode = [](quint32 mode) {
        return TestRecords::frame(0x500, 0x2B1B) + TestRecords::frame(0x500, 0x0002970100002B1C)
               + TestRecords::frame(0x500, quint64(mode) << 32 | 0x2B1D);
    };
    QSignalSpy modes(m_window->radarClient(), &IOrvexClient::imitatorModeChanged);
    m_server->sendBinary(imitatorMode(2));
    QVERIFY(modes.wait());
    QCOMPARE(imitatorBox->title(), QString(" Speed generated with imitator, type 2  "));
    QTRY_VERIFY(imitatorBox->isVisible());
    QVERIFY(!schemeBox->isVisible());

    m_server->sendBinary(imitatorMode(0));
    QVERIFY(modes.wait());
    QCOMPARE(imitatorBox->title(), QString(" Speed generated with imitator  "));
    QTRY_VERIFY(schemeBox->isVisible());
    QVERIFY(!imitatorBox->isVisible());
}

void tst_MainWindow::closingSavesTheProfiles()
{
    QVERIFY(openWindow());
    m_window->profileHandler()->renameProfile(0, "Night shift");
    QPointer<IOrvexClient> client = m_window->radarClient();
    QVERIFY(m_window->close());
    QVERIFY(!m_window->radarClient());
    QTRY_VERIFY(client.isNull());
    QFile file(WorkProfileHandler::SettingsFilePath);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QJsonObject saved = QJsonDocument::fromJson(file.readAll()).object();
    QCOMPARE(saved["profiles"][0]["name"].toString(), QString("Night shift"));
}

void tst_MainWindow::keepsTheOperatorsSize()
{
    // A report far longer than the status bar: the window keeps its width and cuts the
    // report short.
    QVERIFY(openWindow());
    QVERIFY(m_server->waitForClient());
    QTRY_VERIFY(m_window->radarClient()->isConnected());
    QVERIFY(waitForLayout());
    const QSize size = m_window->size();
    const QString port = "/dev/serial/by-id/usb-" + QString(300, 'x');
    m_server->sendText(QJsonDocument(QJsonObject{{"command", IOrvexClient::ServerStateReport},
                                                 {"result", 0},
                                                 {"server_state", 5},
                                                 {"port_name", port}})
                           .toJson());
    auto* state = m_window->findChild<ServerStateWidget*>();
    QTRY_VERIFY(state->isVisible() && state->text().contains(port));
    QVERIFY(state->width() < state->fontMetrics().horizontalAdvance(state->text()));
    QVERIFY(m_window->minimumSizeHint().width() <= size.width());
    QCOMPARE(m_window->size(), size);
}

QTEST_MAIN(tst_MainWindow)
#include "tst_mainwindow.moc"
