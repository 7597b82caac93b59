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
    QHeaderView::setModel(model);
    if (model)
        m_headerTexts = connect(model, &QAbstractItemModel::headerDataChanged, this,
                                &ObjectsTableHeader::forgetSizeHint);
    forgetSizeHint();
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
