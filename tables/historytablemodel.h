#pragma once

#include "historyrowstore.h"

#include <QAbstractTableModel>

#include <vector>

class QIODevice;

// The rows of the objects history with the columns, texts, alignment and id-cell
// colours of the current objects table. A history holds up to a hundred thousand
// rows, so they are kept as numbers and turned into text only when shown or saved.
//
// A radar frame inserts rows anywhere (under an object's previous row) and drops the
// oldest ones. The views hear of all that at once, as one layout change at the frame's
// end: a view told of each inserted row would shift its bookkeeping of the whole history
// once per row. The selection and the current row move with their rows.
class HistoryTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    explicit HistoryTableModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    // The text of a cell, as shown and as saved.
    QString text(int row, int column) const;
    // The values of a row (0 <= row < rowCount()).
    const HistoryRowStore::Row& value(int row) const { return m_rows.at(row); }

    // Inserts a row before the given one (the row count appends).
    void addRow(int row, const HistoryRowStore::Row& value);
    void removeOldestRows(int count);
    // Tells the views of the rows added and removed since the last call.
    void finishChanges();
    void clear();

    // The table as bar-separated UTF-8 text: the header line, then one line per row,
    // each cell right-aligned in its field. False when the device refused the text.
    bool writeText(QIODevice* device) const;

private:
    static QString cellText(const HistoryRowStore::Row& row, int column);
    void beginChanges();

    HistoryRowStore m_rows;
    bool m_changing = false;
    // The indexes the views keep (selection, current row) and the rows they are moving to.
    QModelIndexList m_persistent;
    std::vector<int> m_persistentRows;
};
