#include "cmdstatelabel.h"

#include "commandstatecolor.h"
#include "iorvexclient.h"

#include <QStyle>

#include <algorithm>

namespace {

struct StateLook
{
    int state;
    const char* text;
    QRgb color;
};

const StateLook Looks[] = {
    {IOrvexClient::Queued, QT_TRANSLATE_NOOP("CmdStateLabel", "queued"), CommandStateColor::Queued},
    {IOrvexClient::InProgress, QT_TRANSLATE_NOOP("CmdStateLabel", "in progress"),
     CommandStateColor::InProgress},
    {IOrvexClient::Received, QT_TRANSLATE_NOOP("CmdStateLabel", "command received"),
     CommandStateColor::Done},
    {IOrvexClient::Error, QT_TRANSLATE_NOOP("CmdStateLabel", "error occurred"),
     CommandStateColor::Failed},
};

} // namespace

CmdStateLabel::CmdStateLabel(QWidget* parent)
    : StateLabel(parent)
{ }

void CmdStateLabel::setState(int state)
{
    m_state = state;
    for (const StateLook& look : Looks) {
        if (look.state == state) {
            setText(tr(look.text));
            setTextColor(QColor(look.color));
        }
    }
    setVisible(state != IOrvexClient::None);
}

QSize CmdStateLabel::sizeHint() const
{
    QStringList texts;
    for (const StateLook& look : Looks)
        texts << tr(look.text);
    return sizeForTexts(this, texts);
}

QSize CmdStateLabel::sizeForTexts(const QLabel* label, const QStringList& texts)
{
    int widest = 0;
    for (const QString& text : texts)
        widest = std::max(widest, label->fontMetrics().horizontalAdvance(text));
    // Room for a letter either side, so that a label beside a button does not touch it.
    const int padding = 2 * label->fontMetrics().averageCharWidth();
    const QMargins m = label->contentsMargins();
    return QSize(widest + padding + m.left() + m.right() + 2 * label->margin(),
                 label->fontMetrics().height() + m.top() + m.bottom() + 2 * label->margin());
}
