#include "historytablemodel.h"

#include "localtimeofday.h"
#include "objectcolor.h"
#include "objectstablewidget.h"

#include <QBrush>
#include <QIODevice>

namespace {
using Table = ObjectsTableWidget;

// Cells of a saved table are right-aligned in fields this wide; longer texts are kept whole.
constexpr int IdFieldWidth = 2;
constexpr int ValueFieldWidth = 14;
// Saved text goes to the device in blocks of about this size.
constexpr int WriteBlockBytes = 1 << 16;

void appendCell(QString& line, const QString& text, int column)
{
    const int width = column == Table::IdColumn ? IdFieldWidth : ValueFieldWidth;
    line += QLatin1Char(' ');
    if (text.size() < width)
        line += QString(width - text.size(), QLatin1Char(' '));
    line += text;
    line += QLatin1String(" |");
}

} // namespace

HistoryTableModel::HistoryTableModel(QObject* parent)
    : QAbstractTableModel(parent)
{ }

int HistoryTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : m_rows.size();
}

int HistoryTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : Table::ColumnCount;
}

QString HistoryTableModel::cellText(const HistoryRowStore::Row& row, int column)
{
    switch (column) {
    case Table::IdColumn: return QString::number(row.id);
    case Table::XSpeedColumn: return Table::valueText(column, row.xSpeed);
    case Table::YSpeedColumn: return Table::valueText(column, row.ySpeed);
    case Table::XRangeColumn: return Table::valueText(column, row.xRange);
    case Table::YRangeColumn: return Table::valueText(column, row.yRange);
    case Table::LengthColumn: return Table::valueText(column, row.length);
    case Table::UpdatedColumn: return LocalTimeOfDay::text(row.timeOfDayMs);
    default: return QString();
    }
}

QString HistoryTableModel::text(int row, int column) const
{
    return row >= 0 && row < m_rows.size() ? cellText(m_rows.at(row), column) : QString();
}

QVariant HistoryTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= m_rows.size())
        return QVariant();
    const bool idCell = index.column() == Table::IdColumn;
    switch (role) {
    case Qt::DisplayRole: return text(index.row(), index.column());
    case Qt::TextAlignmentRole:
        return idCell ? int(Qt::AlignCenter) : int(Qt::AlignLeft | Qt::AlignVCenter);
    case Qt::BackgroundRole:
        if (idCell)
            return QBrush(ObjectColor::base(m_rows.at(index.row()).colorIndex));
        return QVariant();
    case Qt::ForegroundRole:
        if (idCell)
            return QBrush(ObjectColor::text(m_rows.at(index.row()).colorIndex));
        return QVariant();
    default: return QVariant();
    }
}

QVariant HistoryTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole)
        return Table::headerText(section);
    return QAbstractTableModel::headerData(section, orientation, role);
}

Qt::ItemFlags HistoryTableModel::flags(const QModelIndex& index) const
{
    // Rows can be selected, never edited.
    return index.isValid() ? Qt::ItemIsSelectable | Qt::ItemIsEnabled : Qt::NoItemFlags;
}

void HistoryTableModel::beginChanges()
{
    if (m_changing)
        return;
    m_changing = true;
    // Only rows move: a vertical hint spares the column header its own bookkeeping.
    emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    m_persistent = persistentIndexList();
    m_persistentRows.clear();
    for (const QModelIndex& index : qAsConst(m_persistent))
        m_persistentRows.push_back(index.row());
}

void HistoryTableModel::addRow(int row, const HistoryRowStore::Row& value)
{
    row = qBound(0, row, m_rows.size());
    beginChanges();
    m_rows.insert(row, value);
    for (int& kept : m_persistentRows) {
        if (kept >= row)
            ++kept;
    }
}

void HistoryTableModel::removeOldestRows(int count)
{
    count = qBound(0, count, m_rows.size());
    if (count == 0)
        return;
    beginChanges();
    m_rows.removeFirst(count);
    for (int& kept : m_persistentRows)
        kept = kept < count ? -1 : kept - count; // a removed row is gone from the views
}

void HistoryTableModel::finishChanges()
{
    if (!m_changing)
        return;
    QModelIndexList moved;
    moved.reserve(m_persistent.size());
    for (int i = 0; i < m_persistent.size(); ++i) {
        const int row = m_persistentRows[size_t(i)];
        moved.append(row >= 0 ? index(row, m_persistent.at(i).column()) : QModelIndex());
    }
    changePersistentIndexList(m_persistent, moved);
    m_persistent.clear();
    m_persistentRows.clear();
    m_changing = false;
    emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

void HistoryTableModel::clear()
{
    finishChanges();
    beginResetModel();
    m_rows.clear();
    endResetModel();
}

bool HistoryTableModel::writeText(QIODevice* device) const
{
    QString line = QStringLiteral("|");
    for (int column = 0; column < Table::ColumnCount; ++column)
        appendCell(line, Table::headerText(column), column);
    line += QLatin1Char('\n');
    QByteArray block = line.toUtf8();
    block.reserve(WriteBlockBytes + 1024);

    bool written = true;
    m_rows.forEach([&](const HistoryRowStore::Row& r) {
        if (!written)
            return;
        line = QStringLiteral("|");
        for (int column = 0; column < Table::ColumnCount; ++column)
            appendCell(line, cellText(r, column), column);
        line += QLatin1Char('\n');
        block += line.toUtf8();
        if (block.size() >= WriteBlockBytes) {
            written = device->write(block) == block.size();
            block.resize(0);
        }
    });
    return written && device->write(block) == block.size();
}
