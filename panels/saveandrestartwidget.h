#pragma once

#include "groupedwidget.h"

class CmdHandler;

namespace Ui {
class SaveAndRestartWidget;
}

// Saves the radar's parameters to its flash memory, or restarts it without saving.
// A radar that talks but does not measure (busy) can still be restarted; only a
// working radar's parameters are saved.
class SaveAndRestartWidget : public GroupedWidget
{
    Q_OBJECT

public:
    explicit SaveAndRestartWidget(QWidget* parent = nullptr);
    ~SaveAndRestartWidget() override;

    CmdHandler* cmdHandler() const { return m_cmdHandler; }

signals:
    void commandWithNoArgs(int command);

public slots:
    void showRadarState(int state);
    void showCommandState(int command, int state, int error);

private slots:
    void doUpdateEnabled();

private:
    void doSendCommandWithNoArgs(int command);

    Ui::SaveAndRestartWidget* m_ui = nullptr;
    CmdHandler* m_cmdHandler = nullptr;
    bool m_radarOnline = false; // the panel's enabled flag
    bool m_radarWorking = false; // the save button's second flag
};
