#pragma once

#include "statelabel.h"

#include <QStringList>

// Shows where a one-shot command is in the radar's command queue: queued, in
// progress, received or failed; hidden when there is nothing to tell.
class CmdStateLabel : public StateLabel
{
    Q_OBJECT

public:
    explicit CmdStateLabel(QWidget* parent = nullptr);

    // An IOrvexClient::CommandState; any other value only shows the label.
    int state() const { return m_state; }
    void setState(int state);

    // As wide as the widest state text, so that the panel never jumps when the label
    // appears, changes or hides.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

    // The size a label needs to show each of the texts in its present font.
    static QSize sizeForTexts(const QLabel* label, const QStringList& texts);

private:
    int m_state = 0;
};
