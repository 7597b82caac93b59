#include "cmdhandler.h"

#include "cmdstatelabel.h"
#include "iorvexclient.h"

#include <QHBoxLayout>
#include <QPushButton>
#include <QTimer>

CmdHandler::CmdHandler(QObject* parent)
    : QObject(parent)
    , m_hideTimer(new QTimer(this))
{
    // Precise: the outcome stays up the full five seconds, not a coarse timer's 5 % less.
    m_hideTimer->setTimerType(Qt::PreciseTimer);
    m_hideTimer->setInterval(HideTimeoutMs);
    m_hideTimer->setSingleShot(true);
    connect(m_hideTimer, &QTimer::timeout, this, &CmdHandler::doHideStates);
}

CmdStateLabel* CmdHandler::addStateLabel(QWidget* parent)
{
    auto* label = new CmdStateLabel(parent);
    if (parent) {
        auto* layout = new QHBoxLayout(parent);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(label);
    }
    label->setAlignment(Qt::AlignCenter);
    label->setAutoFillBackground(true);
    // The hidden label keeps its room, so that nothing moves when it shows.
    QSizePolicy policy = label->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    label->setSizePolicy(policy);
    label->hide();
    return label;
}

void CmdHandler::assignStateLabel(int command, CmdStateLabel* label)
{
    m_labels.insert(command, label);
}

bool CmdHandler::setState(int command, int state, bool emitUpdated)
{
    CmdStateLabel* label = m_labels.value(command);
    if (!label)
        return false;
    label->setState(state);
    if (emitUpdated)
        emit updated();
    return true;
}

void CmdHandler::showCommandState(int command, int state, int error)
{
    Q_UNUSED(error)
    // A queued command has not started yet: it does not keep the others' outcomes up.
    if (setState(command, state, true) && state >= IOrvexClient::InProgress)
        extendHideTimeout();
}

void CmdHandler::setAllStates(int state)
{
    for (CmdStateLabel* label : qAsConst(m_labels))
        label->setState(state);
    emit updated();
}

void CmdHandler::hideStates()
{
    doHideStates();
}

void CmdHandler::doHideStates()
{
    m_hideTimer->stop();
    setAllStates(IOrvexClient::None);
}

bool CmdHandler::isWaiting() const
{
    for (const CmdStateLabel* label : m_labels) {
        if (label->state() == IOrvexClient::Queued || label->state() == IOrvexClient::InProgress)
            return true;
    }
    return false;
}

void CmdHandler::extendHideTimeout()
{
    m_hideTimer->start();
}

bool CmdHandler::isHideTimerActive() const
{
    return m_hideTimer->isActive();
}

void CmdHandler::fixButtonMinWidth(QPushButton* button)
{
    // Fixed at the width the layout gave it, once it has one. Fixing it a pixel wider
    // than that would make it creep wider with every caption change.
    if (button->isVisible() && button->minimumWidth() < button->width())
        button->setMinimumWidth(button->width());
}
