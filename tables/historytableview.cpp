#include "historytableview.h"

#include "historytablemodel.h"

#include <QEvent>
#include <QHeaderView>
#include <QPainter>
#include <QPaintEvent>

#include <algorithm>
#include <cstring>

bool HistoryTableView::ShownRow::looksLike(const ShownRow& other) const
{
    return selected == other.selected && currentColumn == other.currentColumn
           && value == other.value;
}

bool HistoryTableView::Look::operator==(const Look& other) const
{
    return size == other.size && pixelRatio == other.pixelRatio && rowHeight == other.rowHeight
           && focus == other.focus && columns == other.columns;
}

HistoryTableView::HistoryTableView(QWidget* parent)
    : QTableView(parent)
{
    // The kept picture covers the rows; where the table paints itself, its background is
    // filled first (below). Filling it for every repaint cost a picture's worth of pixels.
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
}

void HistoryTableView::setModel(QAbstractItemModel* model)
{
    QTableView::setModel(model);
    m_history = qobject_cast<HistoryTableModel*>(model);
    m_stale = true;
}

bool HistoryTableView::event(QEvent* event)
{
    if (event->type() == QEvent::ParentChange || event->type() == QEvent::Show)
        doWatchWindow();
    return QTableView::event(event);
}

void HistoryTableView::doWatchWindow()
{
    QWidget* top = window();
    if (top == m_window)
        return;
    if (m_window)
        m_window->removeEventFilter(this);
    m_window = top;
    m_window->installEventFilter(this);
}

bool HistoryTableView::eventFilter(QObject* watched, QEvent* event)
{
    // The window is about to repaint what changed: the picture is brought up to date
    // first, as only outside a paint can the table paint into it.
    if (watched == m_window && event->type() == QEvent::UpdateRequest && isVisible()
        && viewport()->updatesEnabled())
        doUpdatePicture();
    return QTableView::eventFilter(watched, event);
}

void HistoryTableView::changeEvent(QEvent* event)
{
    // Colours, font, style and the window's activation change how every row looks.
    switch (event->type()) {
    case QEvent::PaletteChange:
    case QEvent::FontChange:
    case QEvent::StyleChange:
    case QEvent::EnabledChange:
    case QEvent::ActivationChange:
    case QEvent::LayoutDirectionChange:
    case QEvent::LocaleChange: m_stale = true; break;
    default: break;
    }
    QTableView::changeEvent(event);
}

void HistoryTableView::readLook(Look* look) const
{
    look->size = viewport()->size();
    look->pixelRatio = viewport()->devicePixelRatioF();
    look->rowHeight = verticalHeader()->defaultSectionSize();
    look->focus = hasFocus();
    look->columns.clear();
    const int columns = model() ? model()->columnCount(rootIndex()) : 0;
    for (int column = 0; column < columns; ++column) {
        look->columns.push_back(columnViewportPosition(column));
        look->columns.push_back(isColumnHidden(column) ? 0 : columnWidth(column));
    }
}

bool HistoryTableView::shownRows(int height, std::vector<ShownRow>* rows) const
{
    rows->clear();
    if (!m_history)
        return false;
    const int count = m_history->rowCount();
    const int bottom = viewport()->height();
    const QModelIndex current = currentIndex();
    const QItemSelectionModel* selection = selectionModel();
    for (int row = std::max(0, rowAt(0)); row < count; ++row) {
        const int top = rowViewportPosition(row);
        if (top >= bottom)
            break;
        if (rowHeight(row) != height)
            return false;
        ShownRow shown;
        shown.value = m_history->value(row);
        shown.top = top;
        shown.selected = selection && selection->isRowSelected(row, rootIndex());
        // A row with only some of its cells selected is not worth keeping.
        if (!shown.selected && selection && selection->rowIntersectsSelection(row, rootIndex()))
            return false;
        shown.currentColumn = current.row() == row ? current.column() : -1;
        rows->push_back(shown);
    }
    return true;
}

void HistoryTableView::findMoves(std::vector<Move>* moves) const
{
    moves->clear();
    const int height = m_look.size.height();
    const int rowHeight = m_look.rowHeight;
    // Rows keep their order, so each is looked for after the last one found: first where
    // the last one found says it should be, then further down.
    size_t next = 0;
    std::ptrdiff_t offset = 0;
    bool hasOffset = false;
    for (size_t i = 0; i < m_now.size(); ++i) {
        const ShownRow& now = m_now[i];
        size_t found = m_shown.size();
        const std::ptrdiff_t guess = std::ptrdiff_t(i) + offset;
        if (hasOffset && guess >= std::ptrdiff_t(next) && guess < std::ptrdiff_t(m_shown.size())
            && now.looksLike(m_shown[size_t(guess)])) {
            found = size_t(guess);
        } else {
            for (size_t j = next; j < m_shown.size(); ++j) {
                if (now.looksLike(m_shown[j])) {
                    found = j;
                    break;
                }
            }
        }
        if (found == m_shown.size())
            continue;
        next = found + 1;
        offset = std::ptrdiff_t(found) - std::ptrdiff_t(i);
        hasOffset = true;

        // The style paints a selected or current row with colours that depend on where
        // it is (they can differ by one step from those at another place), so such a
        // row is painted anew.
        if (now.selected || now.currentColumn >= 0)
            continue;
        // Every line of the row shown now must have been shown before.
        const ShownRow& before = m_shown[found];
        const int dy = now.top - before.top;
        const int top = std::max(0, now.top);
        const int bottom = std::min(height, now.top + rowHeight);
        if (top - dy < std::max(0, before.top)
            || bottom - dy > std::min(height, before.top + rowHeight))
            continue;
        if (!moves->empty()) {
            Move& last = moves->back();
            if (last.to + last.lines == top && last.from + last.lines == top - dy) {
                last.lines += bottom - top;
                continue;
            }
        }
        moves->push_back(Move{top - dy, top, bottom - top});
    }
}

void HistoryTableView::doMoveLines(const std::vector<Move>& moves)
{
    // The largest block stays where it is in the buffer: the picture's window moves by
    // its shift instead, as far as the buffer allows; beyond its ends the window starts
    // over at the other end, and the block moves there with the others.
    const Move* largest = nullptr;
    for (const Move& m : moves) {
        if (!largest || m.lines > largest->lines)
            largest = &m;
    }
    const int oldOffset = m_offset;
    if (largest) {
        const int lastOffset = m_buffer.height() - m_picture.height();
        const int offset = oldOffset + largest->from - largest->to;
        doSetPictureOffset(offset > lastOffset ? 0 : offset < 0 ? lastOffset : offset);
    }
    // Rows keep their order, so lines moving up never land on lines still to move up
    // when taken from the top, nor lines moving down when taken from the bottom; and
    // the two kinds never land on each other's lines.
    const size_t lineBytes = size_t(m_buffer.bytesPerLine());
    uchar* bits = m_buffer.bits();
    auto move = [&](const Move& m) {
        std::memmove(bits + size_t(m_offset + m.to) * lineBytes,
                     bits + size_t(oldOffset + m.from) * lineBytes, size_t(m.lines) * lineBytes);
    };
    for (const Move& m : moves) {
        if (m_offset + m.to < oldOffset + m.from)
            move(m);
    }
    for (auto m = moves.rbegin(); m != moves.rend(); ++m) {
        if (m_offset + m->to > oldOffset + m->from)
            move(*m);
    }
}

void HistoryTableView::doAllocatePicture(const QSize& pixels, qreal pixelRatio)
{
    if (m_buffer.width() != pixels.width() || m_buffer.height() != 2 * pixels.height())
        m_buffer = QImage(pixels.width(), 2 * pixels.height(), QImage::Format_RGB32);
    m_buffer.setDevicePixelRatio(pixelRatio);
    m_picture = QImage();
    doSetPictureOffset(0);
}

void HistoryTableView::doSetPictureOffset(int offset)
{
    if (offset == m_offset && !m_picture.isNull())
        return;
    m_offset = offset;
    if (m_buffer.isNull())
        return;
    m_picture = QImage(m_buffer.bits() + size_t(offset) * size_t(m_buffer.bytesPerLine()),
                       m_buffer.width(), m_buffer.height() / 2, m_buffer.bytesPerLine(),
                       QImage::Format_RGB32);
    m_picture.setDevicePixelRatio(m_buffer.devicePixelRatio());
}

void HistoryTableView::doRender(const QRegion& region)
{
    m_rendering = true;
    viewport()->render(&m_picture, region.boundingRect().topLeft(), region);
    m_rendering = false;
}

void HistoryTableView::doUpdatePicture()
{
    // The picture stands in for the window's background, which must be opaque.
    const QColor background = viewport()->palette().color(viewport()->backgroundRole());
    if (!background.isValid() || background.alpha() != 255) {
        m_picture = QImage();
        m_stale = true;
        return;
    }
    readLook(&m_lookNow);
    const Look& look = m_lookNow;
    const bool rowsKnown = shownRows(look.rowHeight, &m_now);
    const QRect area(QPoint(0, 0), look.size);
    QRegion repaint(area);
    // Lines are moved by whole device pixels only.
    if (!m_stale && !m_picture.isNull() && look == m_look && look.pixelRatio == 1.0 && rowsKnown) {
        findMoves(&m_moves);
        doMoveLines(m_moves);
        for (const Move& m : qAsConst(m_moves))
            repaint -= QRect(0, m.to, area.width(), m.lines);
    } else {
        doAllocatePicture(look.size * look.pixelRatio, look.pixelRatio);
        m_look = look;
        m_stale = false;
    }
    if (!repaint.isEmpty())
        doRender(repaint);
    if (rowsKnown)
        m_shown.swap(m_now);
    else
        m_shown.clear();
}

bool HistoryTableView::isPictureCurrent()
{
    // Checked again at the paint: between the window's update request and the paint,
    // or in a paint without one, rows may have changed.
    readLook(&m_lookNow);
    if (m_stale || m_picture.isNull() || !(m_lookNow == m_look)
        || !shownRows(m_look.rowHeight, &m_now) || m_now.size() != m_shown.size())
        return false;
    for (size_t i = 0; i < m_now.size(); ++i) {
        if (m_now[i].top != m_shown[i].top || !m_now[i].looksLike(m_shown[i]))
            return false;
    }
    return true;
}

void HistoryTableView::paintEvent(QPaintEvent* event)
{
    if (m_rendering || !isPictureCurrent()) {
        {
            QPainter background(viewport());
            background.fillRect(event->rect(),
                                viewport()->palette().brush(viewport()->backgroundRole()));
        }
        QTableView::paintEvent(event);
        return;
    }
    QPainter painter(viewport());
    const QRect area = event->rect();
    const qreal ratio = m_picture.devicePixelRatio();
    if (ratio == 1.0) {
        painter.drawImage(area.topLeft(), m_picture, area);
    } else {
        painter.drawImage(QRectF(area), m_picture,
                          QRectF(QPointF(area.topLeft()) * ratio, QSizeF(area.size()) * ratio));
    }
}
