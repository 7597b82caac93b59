#pragma once

#include <QComboBox>

// A combo box whose items can be selected by the value they carry rather than by
// their position, for lists whose order is a matter of presentation.
class AdvancedComboBox : public QComboBox
{
    Q_OBJECT

public:
    explicit AdvancedComboBox(QWidget* parent = nullptr);

    // Makes the first item whose data for role equals data the current one. Returns
    // false, leaving the current item alone, when no item carries that data.
    bool setCurrentIndexByItemData(const QVariant& data, int role = Qt::UserRole);
};
