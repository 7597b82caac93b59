#pragma once

#include <QMap>
#include <QObject>

class CmdStateLabel;
class QPushButton;
class QTimer;
class QWidget;

// Follows one-shot commands (actions, plain requests) through the radar's command
// queue and shows each on the state label assigned to its command id. A finished
// command's outcome stays visible until no report has come for five seconds.
class CmdHandler : public QObject
{
    Q_OBJECT

public:
    static constexpr int HideTimeoutMs = 5000;

    explicit CmdHandler(QObject* parent = nullptr);

    // A new hidden label, filling `parent` alone when there is one.
    CmdStateLabel* addStateLabel(QWidget* parent);
    // Binds a command id to a label; several commands may share one label.
    void assignStateLabel(int command, CmdStateLabel* label);

    // False when no label is assigned to the command.
    bool setState(int command, int state, bool emitUpdated);
    void setAllStates(int state);
    void hideStates();
    // Whether any label shows a command that is queued or in progress.
    bool isWaiting() const;
    void extendHideTimeout();
    bool isHideTimerActive() const;

    // Keeps a button from giving way when a label appears beside it.
    static void fixButtonMinWidth(QPushButton* button);

public slots:
    // Connected to the client's radarCommandStateChanged; the error is not shown.
    void showCommandState(int command, int state, int error);

signals:
    void updated();

private slots:
    void doHideStates();

private:
    QMap<int, CmdStateLabel*> m_labels; // the panel's, not owned
    QTimer* m_hideTimer = nullptr;
};
