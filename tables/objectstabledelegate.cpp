#include "objectstabledelegate.h"

#include <QApplication>
#include <QPainter>
#include <QStyle>

namespace {
// A frame shows at most 64 rows of nine cells; the cache keeps the numbers of a few
// frames and is simply started afresh when full (each text costs a few hundred bytes).
constexpr int MaxCachedTexts = 2048;

QStyle* styleOf(const QStyleOptionViewItem& option)
{
    return option.widget ? option.widget->style() : QApplication::style();
}

// The blank the style leaves between a cell's edge and its text.
int textMargin(const QStyleOptionViewItem& option)
{
    return styleOf(option)->pixelMetric(QStyle::PM_FocusFrameHMargin, &option, option.widget) + 1;
}
} // namespace

ObjectsTableDelegate::ObjectsTableDelegate(QObject* parent)
    : QStyledItemDelegate(parent)
{ }

const QStaticText& ObjectsTableDelegate::staticText(const QString& text, const QFont& font) const
{
    if (font != m_font || m_texts.size() >= MaxCachedTexts) {
        m_texts.clear();
        m_font = font;
    }
    auto it = m_texts.find(text);
    if (it == m_texts.end()) {
        QStaticText shaped(text);
        shaped.setTextFormat(Qt::PlainText);
        shaped.setPerformanceHint(QStaticText::AggressiveCaching);
        shaped.prepare(QTransform(), font);
        it = m_texts.insert(text, shaped);
    }
    return it.value();
}

void ObjectsTableDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const
{
    QStyleOptionViewItem opt = option;
    initStyleOption(&opt, index);
    QStyle* style = styleOf(opt);

    // Background, the id cell's colour and the selection, as the style draws them.
    style->drawPrimitive(QStyle::PE_PanelItemViewItem, &opt, painter, opt.widget);

    if (!opt.text.isEmpty()) {
        const QRect textRect = opt.rect.adjusted(textMargin(opt), 0, -textMargin(opt), 0);
        const QStaticText& text = staticText(opt.text, opt.font);
        const QSize size = text.size().toSize();
        const QRect placed
            = QStyle::alignedRect(opt.direction, opt.displayAlignment, size, textRect);
        const QPalette::ColorGroup group = !(opt.state & QStyle::State_Enabled) ? QPalette::Disabled
                                           : (opt.state & QStyle::State_Active)
                                               ? QPalette::Active
                                               : QPalette::Inactive;
        const QPalette::ColorRole role
            = (opt.state & QStyle::State_Selected) ? QPalette::HighlightedText : QPalette::Text;
        // Only a text wider than its cell needs the (costly) clip.
        const bool clip = !textRect.contains(placed);
        const QPen pen = painter->pen();
        if (clip) {
            painter->save();
            painter->setClipRect(textRect, Qt::IntersectClip);
        }
        painter->setFont(opt.font);
        painter->setPen(opt.palette.color(group, role));
        painter->drawStaticText(placed.topLeft(), text);
        if (clip)
            painter->restore();
        else
            painter->setPen(pen);
    }

    if (opt.state & QStyle::State_HasFocus) {
        QStyleOptionFocusRect focus;
        focus.QStyleOption::operator=(opt);
        focus.rect = style->subElementRect(QStyle::SE_ItemViewItemFocusRect, &opt, opt.widget);
        focus.state |= QStyle::State_KeyboardFocusChange | QStyle::State_Item;
        focus.backgroundColor = opt.palette.color(
            (opt.state & QStyle::State_Enabled) ? QPalette::Normal : QPalette::Disabled,
            (opt.state & QStyle::State_Selected) ? QPalette::Highlight : QPalette::Window);
        style->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, painter, opt.widget);
    }
}

QSize ObjectsTableDelegate::sizeHint(const QStyleOptionViewItem& option,
                                     const QModelIndex& index) const
{
    QStyleOptionViewItem opt = option;
    initStyleOption(&opt, index);
    const QSize text = staticText(opt.text, opt.font).size().toSize();
    return QSize(text.width() + 2 * textMargin(opt), qMax(text.height(), opt.fontMetrics.height()));
}
