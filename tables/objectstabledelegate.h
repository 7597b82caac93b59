#pragma once

#include "glyphtext.h"

#include <QFont>
#include <QHash>
#include <QPen>
#include <QPointer>
#include <QStaticText>
#include <QStyle>
#include <QStyledItemDelegate>

class QTableView;

// Draws the cells of the objects tables. A radar frame refills up to a few hundred
// cells many times a second; the style's own item drawing asks the model for every role
// and lays out every text three times (size, elision, drawing). Here a plain cell takes
// its text and colours straight from the model, numbers are drawn from the font's glyphs
// without any layout, and other texts are shaped once and kept. Selected and focused
// cells are drawn as the style draws them. Each cell also draws its own stretch of the
// grid (its right and bottom edge): the view's grid is stroked pixel by pixel down every
// column, which cost as much as all the texts.
class ObjectsTableDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    // Draws the cells of the given view, grid included.
    explicit ObjectsTableDelegate(QTableView* view);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    void paintStyled(QPainter* painter, const QStyleOptionViewItem& option,
                     const QModelIndex& index) const;
    // A cell's text in its rectangle, inside the style's margins, clipped only when wider.
    void drawText(QPainter* painter, const QStyleOptionViewItem& option, const QRect& rect,
                  Qt::Alignment alignment, const QString& text, const QColor& color) const;
    // The size of a text in a font, and whether it was laid out from the glyphs.
    QSizeF textSize(const QString& text, const QFont& font, bool* laidOut) const;
    const QStaticText& staticText(const QString& text, const QFont& font) const;
    // The colour of the grid the style gives a cell.
    const QColor& gridColor(const QStyleOptionViewItem& option) const;

    // Shaped texts for one font; dropped whole when the font changes or it grows large.
    mutable QHash<QString, QStaticText> m_texts;
    mutable QFont m_font;
    mutable GlyphText m_glyphs;
    // The last text's pen: a pen made for every cell cost as much as its grid.
    mutable QPen m_textPen;
    // The last grid colour and what it was asked with.
    mutable QColor m_grid;
    mutable bool m_hasGrid = false;
    mutable QPointer<QStyle> m_gridStyle; // empty again once that style is gone
    mutable qint64 m_gridPalette = 0;
    mutable QStyle::State m_gridState;
};
