#include "objectstableitem.h"

#include "fixedtext.h"

#include <QTableWidget>

ObjectsTableItem::ObjectsTableItem()
    : QTableWidgetItem(ItemType)
{ }

void ObjectsTableItem::setTextQuietly(const QString& text)
{
    m_text = text;
}

void ObjectsTableItem::setNumberQuietly(double value, int decimals)
{
    // A text held by the variant is written in place: the views took their copies of it
    // while painting and gave them back, so a new frame usually finds it unshared.
    if (m_text.userType() != QMetaType::QString)
        m_text = QString();
    FixedText::write(value, decimals, static_cast<QString*>(m_text.data()));
}

void ObjectsTableItem::setColorsQuietly(const QBrush& background, const QBrush& foreground)
{
    m_background = background;
    m_foreground = foreground;
}

QVariant ObjectsTableItem::data(int role) const
{
    if (const QVariant* own = ownValue(this, role))
        return *own;
    return QTableWidgetItem::data(role);
}

void ObjectsTableItem::setData(int role, const QVariant& value)
{
    QVariant* own = ownValue(this, role);
    if (!own) {
        QTableWidgetItem::setData(role, value);
        return;
    }
    if (*own == value)
        return;
    *own = value;
    QTableWidget* table = tableWidget();
    if (!table)
        return;
    const QModelIndex index = table->model()->index(table->row(this), table->column(this));
    const QVector<int> roles = role == Qt::BackgroundRole || role == Qt::ForegroundRole
                                   ? QVector<int>{role}
                                   : QVector<int>{Qt::DisplayRole, Qt::EditRole};
    emit table->model()->dataChanged(index, index, roles);
}

QTableWidgetItem* ObjectsTableItem::clone() const
{
    return new ObjectsTableItem(*this);
}
