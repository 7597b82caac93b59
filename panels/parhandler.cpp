#include "parhandler.h"

#include "iorvexclient.h"
#include "parstatelabel.h"

#include <QTimer>

namespace {

using L = ParStateLabel;

QTimer* makeTimer(QObject* parent, int intervalMs)
{
    // Precise: a coarse timer may fire up to 5 % early.
    auto* timer = new QTimer(parent);
    timer->setTimerType(Qt::PreciseTimer);
    timer->setInterval(intervalMs);
    timer->setSingleShot(true);
    return timer;
}

// What a step of a write or a read command means for its parameter: an acknowledged
// read still waits for the radar's value.
int parameterState(int commandState, bool isRead)
{
    switch (commandState) {
    case IOrvexClient::Queued: return L::Queued;
    case IOrvexClient::InProgress: return L::InProgress;
    case IOrvexClient::Received: return isRead ? L::WaitingForData : L::CommandReceived;
    case IOrvexClient::Error: return L::ErrorOccurred;
    default: return L::Cleared;
    }
}

} // namespace

ParHandler::ParHandler(QObject* parent)
    : QObject(parent)
    , m_dataTimer(makeTimer(this, DataTimeoutMs))
    , m_hideTimer(makeTimer(this, HideTimeoutMs))
{
    connect(m_dataTimer, &QTimer::timeout, this, &ParHandler::onDataTimeout);
    connect(m_hideTimer, &QTimer::timeout, this, [this] { doHideStates(true); });
}

void ParHandler::assignSetCommand(int command, int parameter)
{
    m_setCommands.insert(command, parameter);
}

void ParHandler::assignGetCommand(int command, int parameter)
{
    m_getCommands.insert(command, parameter);
}

void ParHandler::assignStateLabel(int parameter, ParStateLabel* label)
{
    m_labels.insert(parameter, label);
}

bool ParHandler::setState(int parameter, int state, bool emitUpdated)
{
    ParStateLabel* label = m_labels.value(parameter);
    if (!label)
        return false;
    // The label keeps the width of its widest text, so it never shrinks (nor creeps
    // wider report by report, as fixing it at its present width would make it).
    label->setState(state);
    if (emitUpdated)
        emit updated();
    return true;
}

void ParHandler::showCommandState(int command, int state, int error)
{
    Q_UNUSED(error)
    const bool isWrite = m_setCommands.contains(command);
    if (!isWrite && !m_getCommands.contains(command))
        return;
    const int parameter = isWrite ? m_setCommands.value(command) : m_getCommands.value(command);
    const int labelState = parameterState(state, !isWrite);
    if (!setState(parameter, labelState, true))
        return;
    if (labelState == L::InProgress || labelState == L::CommandReceived
        || labelState == L::WaitingForData || labelState == L::ErrorOccurred)
        extendHideTimeout();
    if (labelState == L::WaitingForData)
        extendDataTimeout();
}

void ParHandler::setAllStatesMatch(int state, const QList<int>& which)
{
    doSetAllStates(state, which, true);
}

void ParHandler::setAllStatesExcept(int state, const QList<int>& except)
{
    doSetAllStates(state, except, false);
}

void ParHandler::doSetAllStates(int state, const QList<int>& states, bool match)
{
    for (ParStateLabel* label : qAsConst(m_labels)) {
        if (states.contains(label->state()) == match)
            label->setState(state);
    }
    emit updated();
}

void ParHandler::hideStates(bool keepChanged)
{
    doHideStates(keepChanged);
}

void ParHandler::doHideStates(bool keepChanged)
{
    m_dataTimer->stop();
    m_hideTimer->stop();
    setAllStatesExcept(L::Cleared, keepChanged ? QList<int>{L::ValueChanged} : QList<int>{});
}

bool ParHandler::isWaiting() const
{
    for (const ParStateLabel* label : m_labels) {
        const int state = label->state();
        if (state == L::Queued || state == L::InProgress || state == L::WaitingForData)
            return true;
    }
    return false;
}

void ParHandler::updateDataTimer()
{
    if (isWaiting())
        return;
    m_dataTimer->stop();
    emit updated();
}

void ParHandler::onDataTimeout()
{
    // The radar acknowledged a read but never sent the value.
    extendHideTimeout();
    setAllStatesMatch(L::ErrorOccurred, {L::WaitingForData});
}

void ParHandler::extendDataTimeout()
{
    m_dataTimer->start();
}

void ParHandler::extendHideTimeout()
{
    m_hideTimer->start();
}

bool ParHandler::isDataTimerActive() const
{
    return m_dataTimer->isActive();
}

bool ParHandler::isHideTimerActive() const
{
    return m_hideTimer->isActive();
}
