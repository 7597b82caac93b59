#include "mainwindow.h"
#include "orvexserialdunvelprotocolclient.h"

#include <QPointer>
#include <QtTest>

// The main window as the program entry builds it.
class tst_MainWindow : public QObject
{
    Q_OBJECT

private slots:
    void ownsOneConnectedClient();
};

void tst_MainWindow::ownsOneConnectedClient()
{
    MainWindow window;
    QCOMPARE(window.windowTitle(), QString("Dunvel Orvex Road App"));
    QCOMPARE(window.font().family(), QString("Sans"));

    QPointer<IOrvexClient> client = window.radarClient();
    QVERIFY(qobject_cast<OrvexSerialDunvelProtocolClient*>(client.data()));
    QCOMPARE(client->serverUrl(), QUrl("ws://127.0.0.1:7578/"));
    QCOMPARE(client->parent(), &window);

    // Closing lets go of the client; it is deleted later by the event loop.
    window.show();
    QVERIFY(window.close());
    QVERIFY(!window.radarClient());
    QTRY_VERIFY(client.isNull());
}

QTEST_MAIN(tst_MainWindow)
#include "tst_mainwindow.moc"
