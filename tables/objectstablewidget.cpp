#include "objectstablewidget.h"

#include "fixedtext.h"
#include "iorvexclient.h"
#include "localtimeofday.h"
#include "objectcolor.h"
#include "objectstabledelegate.h"
#include "objectstableheader.h"
#include "objectstableitem.h"
#include "roadobject.h"
#include "ui_objectstablewidget.h"

#include <QCoreApplication>
#include <QEvent>
#include <QHeaderView>
#include <QScrollBar>
#include <QSignalBlocker>

#include <algorithm>
#include <array>
#include <iterator>

namespace {
constexpr int SpeedDecimals = 1;
constexpr int RangeDecimals = 2;
constexpr int LengthDecimals = 1;

// A value column's decimals, and its value as shown (speeds in km/h); -1 for the other
// columns.
int decimalsOf(int column)
{
    switch (column) {
    case ObjectsTableWidget::XSpeedColumn:
    case ObjectsTableWidget::YSpeedColumn: return SpeedDecimals;
    case ObjectsTableWidget::XRangeColumn:
    case ObjectsTableWidget::YRangeColumn: return RangeDecimals;
    case ObjectsTableWidget::LengthColumn: return LengthDecimals;
    default: return -1;
    }
}

double shownValue(int column, double value)
{
    const bool speed
        = column == ObjectsTableWidget::XSpeedColumn || column == ObjectsTableWidget::YSpeedColumn;
    return speed ? RoadObject::kmh(value) : value;
}

// Each id's text and each colour entry's brushes, made once: a frame refills every row,
// and a brush made anew allocates.
const QString& idText(quint8 id)
{
    static std::array<QString, 256> texts;
    QString& text = texts[id];
    if (text.isNull())
        text = QString::number(id);
    return text;
}

struct CellBrushes
{
    bool made = false;
    QBrush background;
    QBrush foreground;
};

const CellBrushes& cellBrushes(quint8 colorIndex)
{
    static std::array<CellBrushes, 256> brushes;
    CellBrushes& entry = brushes[colorIndex];
    if (!entry.made) {
        entry.background = QBrush(ObjectColor::base(colorIndex));
        entry.foreground = QBrush(ObjectColor::text(colorIndex));
        entry.made = true;
    }
    return entry;
}

// The widest value each column usually shows: a vehicle against X at motorway speed,
// the far end of the radar's range, a long truck, a time of day.
const char* const WidestValues[]
    = {"255", "-188.8", "-188.8", "-250.00", "-25.00", "25.5", "00:00:00.000"};
static_assert(std::size(WidestValues) == ObjectsTableWidget::ColumnCount);

// The headers as the form gives them, for tables built without the form.
const char* const HeaderTexts[] = {
    QT_TRANSLATE_NOOP("ObjectsTableWidget", "id"),
    QT_TRANSLATE_NOOP("ObjectsTableWidget", "X speed, km/h"),
    QT_TRANSLATE_NOOP("ObjectsTableWidget", "Y speed, km/h"),
    QT_TRANSLATE_NOOP("ObjectsTableWidget", "X range, m"),
    QT_TRANSLATE_NOOP("ObjectsTableWidget", "Y range, m"),
    QT_TRANSLATE_NOOP("ObjectsTableWidget", "Length, m"),
    QT_TRANSLATE_NOOP("ObjectsTableWidget", "Updated"),
};
static_assert(std::size(HeaderTexts) == ObjectsTableWidget::ColumnCount);
} // namespace

ObjectsTableWidget::ObjectsTableWidget(QWidget* parent)
    : GroupedWidget(parent)
    , m_ui(new Ui::ObjectsTableWidget)
{
    m_ui->setupUi(this);
    // Inside its group box the box's own frame is margin enough.
    if (parent)
        m_ui->objectsTableWidgetLayout->setContentsMargins(0, 0, 0, 0);

    m_ui->tableWidget->setHorizontalHeader(new ObjectsTableHeader(m_ui->tableWidget));
    QHeaderView* header = m_ui->tableWidget->horizontalHeader();
    header->setSectionResizeMode(QHeaderView::Stretch);
    header->setSectionResizeMode(IdColumn, QHeaderView::ResizeToContents);
    header->setSectionsMovable(false);
    // Rows keep the client's order; the header does not sort.
    header->setSectionsClickable(false);
    m_ui->tableWidget->setItemDelegate(new ObjectsTableDelegate(m_ui->tableWidget));
    doFitWidthToTexts();

    showRadarState(IOrvexClient::Offline);
}

ObjectsTableWidget::~ObjectsTableWidget()
{
    delete m_ui;
}

void ObjectsTableWidget::changeEvent(QEvent* event)
{
    GroupedWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::LanguageChange)
        doFitWidthToTexts();
}

void ObjectsTableWidget::doFitWidthToTexts()
{
    // The stretched columns share the width equally, so the table is wide enough when
    // each of them fits the widest header or value among them: nothing is cut, in any
    // language.
    QTableWidget* table = m_ui->tableWidget;
    const QHeaderView* header = table->horizontalHeader();
    const QFontMetrics cellMetrics(table->font());
    const int cellPadding = 2 * (table->style()->pixelMetric(QStyle::PM_FocusFrameHMargin) + 4);
    auto columnWidth = [&](int column) {
        const int value = cellMetrics.horizontalAdvance(QLatin1String(WidestValues[column]));
        return std::max(header->sectionSizeHint(column), value + cellPadding);
    };
    int stretched = 0;
    for (int column = IdColumn + 1; column < ColumnCount; ++column)
        stretched = std::max(stretched, columnWidth(column));
    const int width = columnWidth(IdColumn) + (ColumnCount - 1) * stretched
                      + table->verticalScrollBar()->sizeHint().width() + 2 * table->frameWidth();
    table->setMinimumWidth(width);
}

QTableWidget* ObjectsTableWidget::tableWidget() const
{
    return m_ui->tableWidget;
}

void ObjectsTableWidget::setPaintObjects(bool paintObjects)
{
    m_paintObjects = paintObjects;
}

void ObjectsTableWidget::showRadarState(int state)
{
    const bool working = IOrvexClient::isWorking(state);
    if (!working) {
        startFilling();
        finishFilling();
    }
    GroupedWidget::setEnabled(working);
}

void ObjectsTableWidget::startFilling()
{
    // Only the rows change with a frame: the header, frame and scroll bar are not drawn
    // again for it.
    m_ui->tableWidget->viewport()->setUpdatesEnabled(false);
    // The rows of the last frame are filled anew and the surplus removed at the frame's
    // end: emptying the table and creating every cell again cost more than the rest of
    // the frame's intake together, at hundreds of items per frame.
    m_filledRows = 0;
}

void ObjectsTableWidget::addObject(quint8 id, double xSpeed, double ySpeed, double xRange,
                                   double yRange, double length, const QDateTime& lastDetected)
{
    if (!m_hasUpdateTimeText || lastDetected != m_lastUpdateTime) {
        m_hasUpdateTimeText = true;
        m_lastUpdateTime = lastDetected;
        m_lastUpdateTimeText = LocalTimeOfDay::text(m_localTime.msecs(lastDetected));
    }
    QTableWidget* table = m_ui->tableWidget;
    const int row = m_filledRows++;
    const bool reused = row < table->rowCount();
    QString previousId;
    if (reused) {
        if (const QTableWidgetItem* idItem = table->item(row, IdColumn))
            previousId = idItem->text();
    } else {
        table->insertRow(row);
    }
    {
        // A reused row changes nearly every cell; the views hear of all of them at once at
        // the frame's end rather than of each cell.
        const QSignalBlocker quiet(reused ? table->model() : nullptr);
        fillObjectRow(table, row, m_paintObjects, id, xSpeed, ySpeed, xRange, yRange, length,
                      m_lastUpdateTimeText);
    }
    m_idsChanged = m_idsChanged || (reused && table->item(row, IdColumn)->text() != previousId);
}

void ObjectsTableWidget::finishFilling()
{
    QTableWidget* table = m_ui->tableWidget;
    table->setRowCount(m_filledRows);
    // The id column is sized to its contents, which the header measures anew whenever
    // it hears of a change there: it hears of one only when an id moved to another row.
    QAbstractItemModel* model = table->model();
    const int firstChanged = m_idsChanged ? IdColumn : IdColumn + 1;
    if (m_filledRows > 0)
        emit model->dataChanged(model->index(0, firstChanged),
                                model->index(m_filledRows - 1, model->columnCount() - 1));
    m_idsChanged = false;
    table->viewport()->setUpdatesEnabled(true);
}

QString ObjectsTableWidget::valueText(int column, double value)
{
    const int decimals = decimalsOf(column);
    return decimals < 0 ? QString() : FixedText::number(shownValue(column, value), decimals);
}

QString ObjectsTableWidget::headerText(int column)
{
    if (column < 0 || column >= ColumnCount)
        return QString();
    return QCoreApplication::translate("ObjectsTableWidget", HeaderTexts[column]);
}

void ObjectsTableWidget::fillObjectRow(QTableWidget* table, int row, bool paintObjects, quint8 id,
                                       double xSpeed, double ySpeed, double xRange, double yRange,
                                       double length, const QString& updateTime)
{
    const double values[ColumnCount] = {0.0, xSpeed, ySpeed, xRange, yRange, length, 0.0};
    // Only the id cell carries the object's colours; without painting every object gets
    // the colours of entry 0.
    const CellBrushes& brushes = cellBrushes(paintObjects ? id : 0);

    for (int column = 0; column < table->columnCount(); ++column) {
        QTableWidgetItem* item = table->item(row, column);
        const bool created = !item;
        if (created) {
            item = new ObjectsTableItem;
            item->setFlags(item->flags() & ~Qt::ItemIsEditable);
            item->setTextAlignment(column == IdColumn ? int(Qt::AlignCenter)
                                                      : int(Qt::AlignLeft | Qt::AlignVCenter));
        }
        const int decimals = column < ColumnCount ? decimalsOf(column) : -1;
        if (item->type() == ObjectsTableItem::ItemType) {
            // Quietly: a new cell goes into the table complete, so that the view hears of
            // it once; the caller tells the views of a refilled row. Numbers are written
            // over the cell's own text.
            auto* cell = static_cast<ObjectsTableItem*>(item);
            if (decimals >= 0)
                cell->setNumberQuietly(shownValue(column, values[column]), decimals);
            else
                cell->setTextQuietly(column == IdColumn        ? idText(id)
                                     : column == UpdatedColumn ? updateTime
                                                               : QString());
            if (column == IdColumn)
                cell->setColorsQuietly(brushes.background, brushes.foreground);
        } else {
            item->setText(decimals >= 0             ? valueText(column, values[column])
                          : column == IdColumn      ? idText(id)
                          : column == UpdatedColumn ? updateTime
                                                    : QString());
            if (column == IdColumn) {
                item->setBackground(brushes.background);
                item->setForeground(brushes.foreground);
            }
        }
        if (created)
            table->setItem(row, column, item);
    }
}
