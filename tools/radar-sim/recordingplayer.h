#pragma once

#include "recordedmessage.h"
#include "simoptions.h"

#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>
#include <QVector>

class RecordingReader;

// Plays the server's side of a recording to one client with its original timing,
// starting at once with the first message: --from and --to (seconds since the recording
// started) cut the range, --speed scales the time, --loop starts over after the end. The radar's
// answers to the client's own commands (addReplies) ride in the next radar message, as the radar
// sends them in its next cycle, or go out on their own when no message follows within a cycle.
class RecordingPlayer : public QObject
{
    Q_OBJECT

public:
    // Picks from a recording what the server sent, in order; the entries point into the
    // reader's bytes.
    static QVector<RecordedMessage> serverMessages(RecordingReader& reader);

    RecordingPlayer(const QVector<RecordedMessage>& messages, const SimOptions& options,
                    QObject* parent = nullptr);

    // False when no message falls into the range.
    bool start();
    void addReplies(const QByteArray& records);

signals:
    void message(const QByteArray& bytes, bool binary);
    void finished();

private:
    void playDue();
    void play(const RecordedMessage& entry);
    void sendRepliesAlone();
    qint64 dueUs(int index) const;

    const QVector<RecordedMessage>& m_messages;
    SimOptions m_options;
    int m_first = 0; // the range played: [m_first, m_end)
    int m_end = 0;
    int m_prelude = -1; // the last server-state report before the range
    int m_next = 0;
    qint64 m_loop = 0;
    qint64 m_periodUs = 0; // one pass of the loop
    QElapsedTimer m_clock;
    QTimer m_timer;
    QByteArray m_replies;
    QTimer m_replyTimer;
};
