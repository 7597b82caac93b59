#pragma once

#include "statelabel.h"

// Shows where a radar parameter stands: edited, on its way to the radar, waiting for
// the radar's value, or received from it. Empty when there is nothing to tell.
class ParStateLabel : public StateLabel
{
    Q_OBJECT

public:
    enum ParState {
        Cleared = 0,
        ValueChanged = 1, // edited by the operator, not yet sent
        Queued = 2,
        InProgress = 3,
        CommandReceived = 4, // a write was acknowledged
        WaitingForData = 5, // a read was acknowledged, its value has not come yet
        ReceivedFromRadar = 6,
        ErrorOccurred = 7,
    };
    Q_ENUM(ParState)

    explicit ParStateLabel(QWidget* parent = nullptr);

    // A ParState; any other value clears the label.
    int state() const { return m_state; }
    void setState(int state);

    // As wide as the widest state text: the label keeps one width whatever it shows.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

private:
    int m_state = Cleared;
};
