#pragma once

#include <QList>
#include <QMap>
#include <QObject>

class ParStateLabel;
class QTimer;

// Follows radar parameters that have a write command, a read command and an editor:
// each parameter's label shows the operator's edit, the write or read in the command
// queue, and whether the value read back has arrived. A read acknowledged without
// its value within two seconds counts as failed; outcomes are cleared five seconds
// after the last report.
class ParHandler : public QObject
{
    Q_OBJECT

public:
    static constexpr int DataTimeoutMs = 2000;
    static constexpr int HideTimeoutMs = 5000;

    explicit ParHandler(QObject* parent = nullptr);

    void assignSetCommand(int command, int parameter);
    void assignGetCommand(int command, int parameter);
    void assignStateLabel(int parameter, ParStateLabel* label);

    // False when no label is assigned to the parameter.
    bool setState(int parameter, int state, bool emitUpdated);
    // Every label whose state is (or is not) in the list gets the new state.
    void setAllStatesMatch(int state, const QList<int>& which);
    void setAllStatesExcept(int state, const QList<int>& except);
    // Clears every label; with keepChanged, edits not yet sent stay marked.
    void hideStates(bool keepChanged);
    // Whether any parameter is queued, in progress or waiting for its value.
    bool isWaiting() const;
    // Stops the data time-out once no value is awaited any more.
    void updateDataTimer();
    void extendDataTimeout();
    void extendHideTimeout();
    bool isDataTimerActive() const;
    bool isHideTimerActive() const;

public slots:
    // Connected to the client's radarCommandStateChanged; the error is not shown.
    void showCommandState(int command, int state, int error);
    void doHideStates(bool keepChanged = true);

signals:
    void updated();

private slots:
    void onDataTimeout();

private:
    void doSetAllStates(int state, const QList<int>& states, bool match);

    QMap<int, int> m_setCommands; // write command id to parameter
    QMap<int, int> m_getCommands; // read command id to parameter
    QMap<int, ParStateLabel*> m_labels; // the panel's, not owned
    QTimer* m_dataTimer = nullptr;
    QTimer* m_hideTimer = nullptr;
};
