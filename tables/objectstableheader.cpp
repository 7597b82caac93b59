#include "objectstableheader.h"

#include <QEvent>

ObjectsTableHeader::ObjectsTableHeader(QWidget* parent)
    : QHeaderView(Qt::Horizontal, parent)
{
    connect(this, &QHeaderView::sectionCountChanged, this, &ObjectsTableHeader::forgetSizeHint);
}

QSize ObjectsTableHeader::sizeHint() const
{
    if (!m_sizeHint.isValid())
        m_sizeHint = QHeaderView::sizeHint();
    return m_sizeHint;
}

void ObjectsTableHeader::setModel(QAbstractItemModel* model)
{
    disconnect(m_headerTexts);
    disconnect(m_layout);
    QHeaderView::setModel(model);
    if (model) {
        m_headerTexts = connect(model, &QAbstractItemModel::headerDataChanged, this,
                                &ObjectsTableHeader::forgetSizeHint);
        // Qt's item view slot, which lays the header out after any layout change (so
        // named by its text), gives way to one that knows the hint.
        disconnect(model, SIGNAL(layoutChanged()), this, SLOT(_q_layoutChanged()));
        m_layout = connect(model, &QAbstractItemModel::layoutChanged, this,
                           &ObjectsTableHeader::onLayoutChanged);
    }
    forgetSizeHint();
}

void ObjectsTableHeader::onLayoutChanged(const QList<QPersistentModelIndex>& parents,
                                         QAbstractItemModel::LayoutChangeHint hint)
{
    Q_UNUSED(parents)
    // Rows moving leave the columns as they were.
    if (hint != QAbstractItemModel::VerticalSortHint)
        scheduleDelayedItemsLayout();
}

bool ObjectsTableHeader::event(QEvent* event)
{
    switch (event->type()) {
    case QEvent::FontChange:
    case QEvent::StyleChange:
    case QEvent::LanguageChange:
    case QEvent::ScreenChangeInternal: forgetSizeHint(); break;
    default: break;
    }
    return QHeaderView::event(event);
}

void ObjectsTableHeader::forgetSizeHint()
{
    m_sizeHint = QSize();
}
