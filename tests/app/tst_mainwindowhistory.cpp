#include "historytablemodel.h"
#include "historytablewidget.h"
#include "loopbackserver.h"
#include "mainwindow.h"
#include "objectcolor.h"
#include "orvexcontrol.h"
#include "testrecords.h"
#include "variantids.h"
#include "workprofilehandler.h"

#include <QHeaderView>
#include <QJsonDocument>
#include <QMenuBar>
#include <QTableView>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

// The objects history window in the main window: opened and closed through the profile
// as control 12, and fed by the radar client.
class tst_MainWindowHistory : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void menuOpensItAndClosingStoresItHidden();
    void measuredObjectsReachTheHistory();

private:
    // The control's "visible" in the current profile, and the profile's name.
    QJsonValue historyStoredVisible() const
    {
        return QJsonValue(profile()["view"])["controls"]["12"]["visible"];
    }
    QJsonObject profile() const
    {
        WorkProfileHandler* handler = m_window->profileHandler();
        return handler->profile(handler->currentProfileId());
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_previousDir;
    std::unique_ptr<LoopbackServer> m_server;
    std::unique_ptr<MainWindow> m_window;
};

void tst_MainWindowHistory::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    m_previousDir = QDir::currentPath();
    QDir::setCurrent(m_dir->path());
    m_server = std::make_unique<LoopbackServer>();
    QJsonObject profile = WorkProfileHandler::defaultProfile();
    profile.insert("connection", QJsonObject{{"radar_protocol", 0},
                                             {"radar_server_url", m_server->url().toString()}});
    QFile file(WorkProfileHandler::SettingsFilePath);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(
        QJsonDocument(QJsonObject{{"profiles", QJsonArray{profile}}, {"current_id", 0}}).toJson());
    file.close();
    m_window = std::make_unique<MainWindow>();
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
}

void tst_MainWindowHistory::cleanup()
{
    m_window.reset();
    m_server.reset();
    QDir::setCurrent(m_previousDir);
    m_dir.reset();
}

void tst_MainWindowHistory::menuOpensItAndClosingStoresItHidden()
{
    QAction* item = nullptr;
    for (QAction* action : m_window->menuBar()->findChildren<QAction*>()) {
        if (action->text() == "Objects &history")
            item = action;
    }
    QVERIFY(item && item->isCheckable() && !item->isChecked());
    HistoryTableWidget* history = m_window->historyWidget();
    QVERIFY(!history->isVisible() && !history->isEnabled());

    item->trigger();
    QVERIFY(history->isVisible() && history->isEnabled());
    QVERIFY(history->isWindow());
    QCOMPARE(history->parentWidget(), m_window.get());
    QCOMPARE(history->windowModality(), Qt::NonModal);
    QCOMPARE(history->windowTitle(),
             QString("Objects history — %1").arg(profile()["name"].toString()));
    QCOMPARE(historyStoredVisible(), QJsonValue(true));

    // Closed by the operator: unticked, stored hidden, and the log stops.
    QVERIFY(history->close());
    QVERIFY(!history->isVisible() && !history->isEnabled());
    QVERIFY(!item->isChecked());
    QCOMPARE(historyStoredVisible(), QJsonValue(false));
}

void tst_MainWindowHistory::measuredObjectsReachTheHistory()
{
    m_window->profileHandler()->setControlVisible(ObjectsHistoryControl, true);
    m_window->profileHandler()->setPaintObjects(true);
    QVERIFY(m_server->waitForClient());
    QSignalSpy frames(m_window->radarClient(), &IOrvexClient::frameFinished);
    const VariantIds& serD = VariantIds::of(0);
    auto send = [&](const QDateTime& time, const QList<quint8>& objects) {
        QByteArray message = TestRecords::header(time) + TestRecords::frame(serD.sync, 0);
        for (quint8 id : objects) {
            const quint64 payload = TestRecords::roadObjectAt(id, 20.0 + id, 1.5);
            message += TestRecords::frame(quint16(serD.objectMin + (payload >> 58)), payload);
        }
        m_server->sendBinary(message);
        return frames.wait();
    };
    // The client reports objects once the radar is online, after a few messages.
    const QDateTime t0 = QDateTime::currentDateTimeUtc();
    for (int i = 0; i < 3; ++i)
        QVERIFY(send(t0.addMSecs(-1000 + i * 100), {}));
    QVERIFY(send(t0, {1, 2}));
    // Object 2 is only carried over by the client in the second frame.
    QVERIFY(send(t0.addMSecs(100), {1}));

    const HistoryTableModel* model = m_window->historyWidget()->model();
    // The view hears of a frame's rows at its end.
    QCOMPARE(m_window->historyWidget()->tableView()->verticalHeader()->count(), 3);
    QCOMPARE((QStringList{model->text(0, 0), model->text(1, 0), model->text(2, 0)}),
             (QStringList{"1", "1", "2"}));
    QCOMPARE(model->index(2, 0).data(Qt::BackgroundRole).value<QBrush>().color(),
             ObjectColor::base(2));
}

QTEST_MAIN(tst_MainWindowHistory)
#include "tst_mainwindowhistory.moc"
