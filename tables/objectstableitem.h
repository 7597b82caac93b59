#pragma once

#include <QTableWidgetItem>
#include <QVariant>

// A cell of the objects table. A frame refills every cell of every row; a plain item
// compares each new text and colour with the old one and tells the model of each
// change, which cost more than making the texts. This item takes a frame's text and
// colours quietly, and the table tells its views of the refilled rows at once. Set
// through the usual item calls, it tells the model as any item does.
class ObjectsTableItem : public QTableWidgetItem
{
public:
    static constexpr int ItemType = QTableWidgetItem::UserType + 1;

    ObjectsTableItem();

    // The cell's text, and for the id cell its colours, without a word to the model.
    void setTextQuietly(const QString& text);
    // The text of a number with a fixed count of decimals, written over the cell's own
    // text where it can, without a word to the model.
    void setNumberQuietly(double value, int decimals);
    void setColorsQuietly(const QBrush& background, const QBrush& foreground);

    QVariant data(int role) const override;
    void setData(int role, const QVariant& value) override;
    QTableWidgetItem* clone() const override;

private:
    // Where this item keeps a role itself; null for the roles the base item keeps.
    template<typename Self> static auto ownValue(Self* self, int role)
    {
        using Value = decltype(&self->m_text); // const for a const item
        switch (role) {
        case Qt::DisplayRole:
        case Qt::EditRole: return Value(&self->m_text);
        case Qt::BackgroundRole: return Value(&self->m_background);
        case Qt::ForegroundRole: return Value(&self->m_foreground);
        default: return Value(nullptr);
        }
    }

    QVariant m_text;
    QVariant m_background;
    QVariant m_foreground;
};
