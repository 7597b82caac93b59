#include "advancedcombobox.h"

AdvancedComboBox::AdvancedComboBox(QWidget* parent)
    : QComboBox(parent)
{ }

bool AdvancedComboBox::setCurrentIndexByItemData(const QVariant& data, int role)
{
    for (int index = 0; index < count(); ++index) {
        if (itemData(index, role) == data) {
            setCurrentIndex(index);
            return true;
        }
    }
    return false;
}
