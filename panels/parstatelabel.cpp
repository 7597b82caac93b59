#include "parstatelabel.h"

#include "cmdstatelabel.h"
#include "commandstatecolor.h"

namespace {

struct StateLook
{
    int state;
    const char* text;
    QRgb color;
};

using L = ParStateLabel;
const StateLook Looks[] = {
    {L::ValueChanged, QT_TRANSLATE_NOOP("ParStateLabel", "value changed"),
     CommandStateColor::Changed},
    {L::Queued, QT_TRANSLATE_NOOP("ParStateLabel", "queued"), CommandStateColor::Queued},
    {L::InProgress, QT_TRANSLATE_NOOP("ParStateLabel", "in progress"),
     CommandStateColor::InProgress},
    {L::CommandReceived, QT_TRANSLATE_NOOP("ParStateLabel", "command received"),
     CommandStateColor::Done},
    {L::WaitingForData, QT_TRANSLATE_NOOP("ParStateLabel", "waiting for data"),
     CommandStateColor::InProgress},
    {L::ReceivedFromRadar, QT_TRANSLATE_NOOP("ParStateLabel", "received from radar"),
     CommandStateColor::Done},
    {L::ErrorOccurred, QT_TRANSLATE_NOOP("ParStateLabel", "error occurred"),
     CommandStateColor::Failed},
};

} // namespace

ParStateLabel::ParStateLabel(QWidget* parent)
    : StateLabel(parent)
{
    setAlignment(Qt::AlignCenter);
}

void ParStateLabel::setState(int state)
{
    for (const StateLook& look : Looks) {
        if (look.state == state) {
            m_state = state;
            setText(tr(look.text));
            setTextColor(QColor(look.color));
            return;
        }
    }
    m_state = Cleared;
    clear();
}

QSize ParStateLabel::sizeHint() const
{
    QStringList texts;
    for (const StateLook& look : Looks)
        texts << tr(look.text);
    return CmdStateLabel::sizeForTexts(this, texts);
}
