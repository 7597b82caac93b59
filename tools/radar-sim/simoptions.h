#pragma once

#include <QString>
#include <QStringList>
#include <QtGlobal>
#include <QUrl>

// Everything the simulator can be told on its command line.
struct SimOptions
{
    QString host = QStringLiteral("127.0.0.1");
    quint16 port = 7578; // 0: any free port (printed at start)
    double rate = 10.0; // radar cycles per second
    bool timeStampHeader = true;
    int variant = 0; // 0 = SerD ids, 1 = SerP ids
    int vehicles = 8;
    QString roadFile;
    quint32 seed = 0;
    bool seedGiven = false;
    quint16 selfTestWord = 0x3F;
    // Simulated seconds per second of wall time: cycles come this much more often, the
    // traffic moves as far per cycle, and the radar's time stamps follow simulated time.
    double timeScale = 1.0;
    // The simulator's own count of the vehicles passing a detection line this far along
    // the road, written to this file as they pass.
    QString truthFile;
    double truthLine = 50.0;
    QString portName = QStringLiteral("/dev/ttySIM0");

    // Fault injection.
    int busyAcks = 0; // answer the next N commands with 255
    int errorAck = 0; // answer every command with this code (1-254), 0: off
    bool noAcks = false; // never answer a command
    int garbageEvery = 0; // a malformed record every N messages, 0: never
    double silenceAfter = -1.0; // stop sending after this many seconds, < 0: never
    bool ignorePings = false; // stall every connection so no pong reaches the client
    bool quiet = false;

    // Relaying, recording and replaying.
    QUrl proxyUrl; // relay this radar server instead of simulating one
    QString recordFile;
    QString replayFile;
    double speed = 1.0; // replay time scale, 0.1 to 100
    bool loop = false;
    double replayFrom = 0.0; // seconds since the recording started
    double replayTo = -1.0; // < 0: to the end

    // Parses the arguments (program name first). On a bad option returns false and
    // writes the reason; --help and --version print and set `exitNow`.
    static bool parse(const QStringList& arguments, SimOptions& options, QString& error,
                      bool& exitNow);
};
