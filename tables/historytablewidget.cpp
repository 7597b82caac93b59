#include "historytablewidget.h"

#include "historytablemodel.h"
#include "objectstabledelegate.h"
#include "objectstableheader.h"
#include "ui_historytablewidget.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QScrollBar>

namespace {
const QString ExportDirectoryName = QStringLiteral("history");
const QString ExportFileTimeFormat = QStringLiteral("yyyy-MM-dd_hh-mm-ss");
} // namespace

HistoryTableWidget::HistoryTableWidget(QWidget* parent, Qt::WindowFlags flags)
    : StandaloneWidget(parent, flags)
    , m_ui(new Ui::HistoryTableWidget)
    , m_model(new HistoryTableModel(this))
{
    m_lastRowById.fill(NoRow);
    m_ui->setupUi(this);
    QTableView* table = m_ui->tableView;
    table->setModel(m_model);
    // Every frame moves rows, which the model announces as one layout change. Before it,
    // the row header walks all its (up to 100000) rows to remember the resized and hidden
    // ones, and finds none: the rows are all alike and the header is not even shown. After
    // the change it still takes the new row count. (Qt's own slot, so named by its text.)
    QObject::disconnect(m_model,
                        SIGNAL(layoutAboutToBeChanged(QList<QPersistentModelIndex>,
                                                      QAbstractItemModel::LayoutChangeHint)),
                        table->verticalHeader(),
                        SLOT(_q_sectionsAboutToBeChanged(QList<QPersistentModelIndex>,
                                                         QAbstractItemModel::LayoutChangeHint)));
    table->setItemDelegate(new ObjectsTableDelegate(table));
    table->setHorizontalHeader(new ObjectsTableHeader(table));
    QHeaderView* header = table->horizontalHeader();
    header->setSectionResizeMode(QHeaderView::Stretch);
    header->setSectionsMovable(false);
    // Rows keep the order of the log; the header does not sort. Nor does it mark the
    // columns of the selected row: while the log follows its end, a new row is selected
    // at every frame, and the header, hearing of it, would be painted again each time.
    header->setSectionsClickable(false);
    header->setHighlightSections(false);
    header->setSelectionModel(new QItemSelectionModel(m_model, header));

    connect(m_ui->pauseWorkButton, &QPushButton::toggled, this,
            &HistoryTableWidget::onPauseToggled);
    connect(m_ui->clearTableButton, &QPushButton::clicked, this, &HistoryTableWidget::doClear);
    connect(m_ui->saveToFileButton, &QPushButton::clicked, this, &HistoryTableWidget::doSaveToFile);
    connect(table->verticalScrollBar(), &QScrollBar::valueChanged, this,
            &HistoryTableWidget::onScrolled);
}

HistoryTableWidget::~HistoryTableWidget()
{
    delete m_ui;
}

QTableView* HistoryTableWidget::tableView() const
{
    return m_ui->tableView;
}

QString HistoryTableWidget::exportDirectory()
{
    return QStringLiteral("%1/%2").arg(QCoreApplication::applicationDirPath(), ExportDirectoryName);
}

QString HistoryTableWidget::exportFileName(const QDateTime& localTime)
{
    return QStringLiteral("%1.txt").arg(localTime.toString(ExportFileTimeFormat));
}

void HistoryTableWidget::setEnabled(bool enabled)
{
    if (enabled) {
        m_paused = m_ui->pauseWorkButton->isChecked();
    } else {
        doClear();
        m_paused = true;
    }
    // A frame cut short here must not leave the window frozen.
    m_ui->tableView->viewport()->setUpdatesEnabled(true);
    StandaloneWidget::setEnabled(enabled);
}

void HistoryTableWidget::setPaintObjects(bool paintObjects)
{
    m_paintObjects = paintObjects;
}

void HistoryTableWidget::startFilling()
{
    if (m_paused)
        return;
    // Only the rows change with a frame: the buttons, header and scroll bar are not
    // drawn again for it.
    m_ui->tableView->viewport()->setUpdatesEnabled(false);
    m_seenIds.reset();
}

void HistoryTableWidget::setFrameDateTimeUtc(const QDateTime& frameTime)
{
    m_frameTime = frameTime;
    m_hasFrameTimeOfDay = false;
}

qint32 HistoryTableWidget::frameTimeOfDay()
{
    if (!m_hasFrameTimeOfDay) {
        m_hasFrameTimeOfDay = true;
        m_frameTimeOfDay = m_localTime.msecs(m_frameTime);
    }
    return m_frameTimeOfDay;
}

void HistoryTableWidget::addObject(quint8 id, double xSpeed, double ySpeed, double xRange,
                                   double yRange, double length, const QDateTime& lastDetected)
{
    if (m_paused)
        return;
    m_seenIds.set(id);
    // The radar repeats an object it missed in this frame with its old time: that is no
    // new measurement.
    if (lastDetected != m_frameTime)
        return;
    const int row = m_lastRowById[id] != NoRow ? m_lastRowById[id] + 1 : m_model->rowCount();
    // Every object's last row from here on moves down by one (written without a branch,
    // so that the compiler takes the 256 entries several at a time).
    for (int& last : m_lastRowById)
        last += int(last >= row);
    m_lastRowById[id] = row;

    HistoryRowStore::Row value;
    value.xSpeed = xSpeed;
    value.ySpeed = ySpeed;
    value.xRange = xRange;
    value.yRange = yRange;
    value.length = length;
    // Every row taken has the frame's time.
    value.timeOfDayMs = frameTimeOfDay();
    value.id = id;
    value.colorIndex = m_paintObjects ? id : 0;
    m_model->addRow(row, value);
}

void HistoryTableWidget::finishFilling()
{
    if (m_paused)
        return;
    // An object the radar no longer reports ends its group: if it comes back, it starts
    // a new one at the bottom.
    for (int id = 0; id < IdCount; ++id) {
        if (!m_seenIds.test(size_t(id)))
            m_lastRowById[size_t(id)] = NoRow;
    }
    m_seenIds.reset();

    const int excess = m_model->rowCount() - MaxRows;
    if (excess > 0) {
        for (int& last : m_lastRowById) {
            if (last != NoRow)
                last = last - excess < 0 ? NoRow : last - excess;
        }
        m_model->removeOldestRows(excess);
    }
    m_model->finishChanges();

    if (m_follow && m_model->rowCount() > 0) {
        QTableView* table = m_ui->tableView;
        table->setCurrentIndex(m_model->index(m_model->rowCount() - 1, 0));
        table->scrollToBottom();
    }
    m_ui->tableView->viewport()->setUpdatesEnabled(true);
}

void HistoryTableWidget::onPauseToggled(bool checked)
{
    // A disabled log stays paused whatever the button says.
    m_paused = checked || !isEnabled();
    if (m_paused)
        doEndGroups();
    m_ui->pauseWorkButton->setText(checked ? tr("Continue") : tr("Pause"));
    // A frame cut short by the pause is shown as it stands.
    m_model->finishChanges();
    m_ui->tableView->viewport()->setUpdatesEnabled(true);
}

void HistoryTableWidget::onScrolled(int value)
{
    const QScrollBar* bar = m_ui->tableView->verticalScrollBar();
    m_follow = bar->maximum() > 0 && value == bar->maximum();
}

void HistoryTableWidget::doEndGroups()
{
    m_lastRowById.fill(NoRow);
}

void HistoryTableWidget::doClear()
{
    doEndGroups();
    m_model->clear();
}

void HistoryTableWidget::doSaveToFile()
{
    const QString directory = exportDirectory();
    QDir().mkpath(directory);
    QFile file(QDir(directory).filePath(exportFileName(QDateTime::currentDateTime())));
    // A file that cannot be written leaves everything as it was.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text))
        return;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    m_model->writeText(&file);
    file.close();
    QApplication::restoreOverrideCursor();
}
