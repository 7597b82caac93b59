#pragma once

#include "historyrowstore.h"

#include <QImage>
#include <QPointer>
#include <QTableView>

#include <vector>

class HistoryTableModel;

// The history's table. A frame at the log's end moves every shown row up by a row or
// two (each object's new row goes in under its group, the oldest rows of the log go) and
// brings a new row in at the bottom, yet a plain table paints every cell of the window
// again for it, which costs more than all the rest of the history's frame.
//
// This view keeps a picture of what it shows. Before its window repaints, it finds the
// rows now shown among those in the picture: those still shown, only moved, are moved
// within the picture, and only the others (new rows, a row whose selection changed, the
// space below the last row) are painted by the table, into the picture; the window then
// gets the picture. Anything else a row's look depends on (size, columns, row height,
// palette, font, focus) starts the picture afresh. A paint that comes without the
// window's repaint (a grab, a forced repaint) finds the picture behind and paints as any
// table does.
class HistoryTableView : public QTableView
{
    Q_OBJECT

public:
    explicit HistoryTableView(QWidget* parent = nullptr);

    void setModel(QAbstractItemModel* model) override;

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    // A row that is at least partly shown: its values, whether it is selected or
    // current, and where it is.
    struct ShownRow
    {
        HistoryRowStore::Row value;
        int top = 0; // in the viewport; negative for a row cut by the top edge
        bool selected = false;
        int currentColumn = -1; // the current cell's column, -1 when not the current row
        bool looksLike(const ShownRow& other) const;
    };
    // What every row's look depends on; a change starts the picture afresh.
    struct Look
    {
        QSize size;
        qreal pixelRatio = 1.0;
        int rowHeight = 0;
        bool focus = false;
        std::vector<int> columns; // each column's left edge and width
        bool operator==(const Look& other) const;
    };
    // Lines of the picture that stay as they are, only moved.
    struct Move
    {
        int from = 0; // the first line before
        int to = 0; // the first line now
        int lines = 0;
    };

    // Reads what the rows' look depends on now (into a kept Look, sparing allocations).
    void readLook(Look* look) const;
    // The rows shown now, top to bottom; false when rows differ in height.
    bool shownRows(int height, std::vector<ShownRow>* rows) const;
    // Which lines of the picture can stay, and where they go (the look unchanged).
    void findMoves(std::vector<Move>* moves) const;
    bool isPictureCurrent();
    void doWatchWindow();
    void doUpdatePicture();
    void doMoveLines(const std::vector<Move>& moves);
    void doAllocatePicture(const QSize& pixels, qreal pixelRatio);
    void doSetPictureOffset(int offset);
    void doRender(const QRegion& region);

    HistoryTableModel* m_history = nullptr;
    QPointer<QWidget> m_window; // whose repaints the picture is brought up to date for
    // The picture is a window onto a buffer twice its height: the rows moving up by a
    // row or two at every frame move the window down the buffer instead of their lines
    // (1.6 MB at 800 x 500), and only when it reaches the buffer's end are they moved, to
    // its top.
    QImage m_buffer;
    int m_offset = 0; // the picture's first line in the buffer
    QImage m_picture;
    Look m_look; // the picture's
    Look m_lookNow; // read anew before each use (kept to spare allocations)
    bool m_stale = true;
    std::vector<ShownRow> m_shown; // the rows the picture holds
    std::vector<ShownRow> m_now; // the rows shown now (kept to spare allocations)
    std::vector<Move> m_moves; // likewise
    bool m_rendering = false; // the table paints into the picture
};
