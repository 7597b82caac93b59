#include "objectstabledelegate.h"

#include <QApplication>
#include <QPainter>
#include <QStyle>
#include <QTableView>

namespace {
// A frame shows at most 64 rows of nine cells; the cache keeps the numbers of a few
// frames and is simply started afresh when full (each text costs a few hundred bytes).
constexpr int MaxCachedTexts = 2048;

QStyle* styleOf(const QStyleOptionViewItem& option)
{
    return option.widget ? option.widget->style() : QApplication::style();
}

// The palette group a cell's text takes its colour from.
QPalette::ColorGroup colorGroup(const QStyleOptionViewItem& option)
{
    if (!(option.state & QStyle::State_Enabled))
        return QPalette::Disabled;
    return (option.state & QStyle::State_Active) ? QPalette::Active : QPalette::Inactive;
}

// The blank the style leaves between a cell's edge and its text.
int textMargin(const QStyleOptionViewItem& option)
{
    return styleOf(option)->pixelMetric(QStyle::PM_FocusFrameHMargin, &option, option.widget) + 1;
}
} // namespace

ObjectsTableDelegate::ObjectsTableDelegate(QTableView* view)
    : QStyledItemDelegate(view)
{
    view->setShowGrid(false);
}

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

QSizeF ObjectsTableDelegate::textSize(const QString& text, const QFont& font, bool* laidOut) const
{
    if (!m_glyphs.isFor(font))
        m_glyphs.setFont(font);
    *laidOut = m_glyphs.layout(text);
    if (*laidOut)
        return QSizeF(m_glyphs.width(), m_glyphs.height());
    return staticText(text, font).size();
}

const QColor& ObjectsTableDelegate::gridColor(const QStyleOptionViewItem& option) const
{
    // The style works the colour out from the palette (a darker shade of the window's),
    // which cost more than drawing the grid: it is asked again only when the style, the
    // palette or the cell's state differ from the last cell's.
    QStyle* style = styleOf(option);
    const qint64 palette = option.palette.cacheKey();
    if (!m_hasGrid || style != m_gridStyle || palette != m_gridPalette
        || option.state != m_gridState) {
        m_grid = QColor::fromRgba(
            QRgb(style->styleHint(QStyle::SH_Table_GridLineColor, &option, option.widget)));
        m_hasGrid = true;
        m_gridStyle = style;
        m_gridPalette = palette;
        m_gridState = option.state;
    }
    return m_grid;
}

void ObjectsTableDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const
{
    // The grid line on the cell's right and bottom edge, where the view would draw it.
    const QRect cell = option.rect;
    const QRect rect = cell.adjusted(0, 0, -1, -1);
    const QColor& grid = gridColor(option);
    painter->fillRect(QRect(cell.right(), cell.top(), 1, cell.height()), grid);
    painter->fillRect(QRect(cell.left(), cell.bottom(), cell.width() - 1, 1), grid);
    if (option.state & (QStyle::State_Selected | QStyle::State_HasFocus)) {
        QStyleOptionViewItem inner = option;
        inner.rect = rect;
        paintStyled(painter, inner, index);
        return;
    }
    const QVariant background = index.data(Qt::BackgroundRole);
    if (background.isValid()) {
        const QBrush brush = qvariant_cast<QBrush>(background);
        if (brush.style() != Qt::NoBrush)
            painter->fillRect(rect, brush);
    }
    const QString text = index.data(Qt::DisplayRole).toString();
    if (text.isEmpty())
        return;
    const QVariant alignment = index.data(Qt::TextAlignmentRole);
    const QVariant foreground = index.data(Qt::ForegroundRole);
    drawText(painter, option, rect,
             alignment.isValid() ? Qt::Alignment(alignment.toInt()) : option.displayAlignment, text,
             foreground.isValid() ? qvariant_cast<QBrush>(foreground).color()
                                  : option.palette.color(colorGroup(option), QPalette::Text));
}

void ObjectsTableDelegate::drawText(QPainter* painter, const QStyleOptionViewItem& option,
                                    const QRect& rect, Qt::Alignment alignment, const QString& text,
                                    const QColor& color) const
{
    const int margin = textMargin(option);
    const QRect textRect = rect.adjusted(margin, 0, -margin, 0);
    bool laidOut = false;
    const QSize size = textSize(text, option.font, &laidOut).toSize();
    const QRect placed = QStyle::alignedRect(option.direction, alignment, size, textRect);
    // Only a text wider than its cell needs the (costly) clip.
    const bool clip = !textRect.contains(placed);
    if (laidOut && !clip) {
        // The usual case, a number that fits: only the pen is changed and given back
        // (a whole saved state costs as much as drawing the number).
        const QPen pen = painter->pen();
        const QColor ink = color.isValid() ? color : QColor(Qt::black); // as the painter does
        if (m_textPen.color() != ink)
            m_textPen = QPen(ink);
        painter->setPen(m_textPen);
        m_glyphs.draw(painter, placed.topLeft());
        painter->setPen(pen);
        return;
    }
    painter->save();
    if (clip)
        painter->setClipRect(textRect, Qt::IntersectClip);
    painter->setPen(color);
    if (laidOut) {
        m_glyphs.draw(painter, placed.topLeft());
    } else {
        painter->setFont(option.font);
        painter->drawStaticText(placed.topLeft(), staticText(text, option.font));
    }
    painter->restore();
}

void ObjectsTableDelegate::paintStyled(QPainter* painter, const QStyleOptionViewItem& option,
                                       const QModelIndex& index) const
{
    QStyleOptionViewItem opt = option;
    initStyleOption(&opt, index);
    QStyle* style = styleOf(opt);

    // Background, the id cell's colour and the selection, as the style draws them.
    style->drawPrimitive(QStyle::PE_PanelItemViewItem, &opt, painter, opt.widget);

    if (!opt.text.isEmpty()) {
        const QPalette::ColorRole role
            = (opt.state & QStyle::State_Selected) ? QPalette::HighlightedText : QPalette::Text;
        drawText(painter, opt, opt.rect, opt.displayAlignment, opt.text,
                 opt.palette.color(colorGroup(opt), role));
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
    bool laidOut = false;
    const QSize text
        = textSize(index.data(Qt::DisplayRole).toString(), option.font, &laidOut).toSize();
    return QSize(text.width() + 2 * textMargin(option),
                 qMax(text.height(), option.fontMetrics.height()));
}
