#pragma once

#include <QToolButton>

class QMenu;

// One named preset of a panel, as a button in the panel's preset row. A click applies
// the preset; its context menu renames it, overwrites it with the panel's present
// values or deletes it. The button knows its preset only by its place in the list.
class PresetButton : public QToolButton
{
    Q_OBJECT

public:
    explicit PresetButton(int presetId, QWidget* parent = nullptr);

    int presetId() const { return m_presetId; }
    QMenu* menu() const { return m_menu; }

signals:
    void renameRequested(int presetId);
    void updateRequested(int presetId);
    void deleteRequested(int presetId);

protected:
    // A long name is cut short with an ellipsis rather than widen the panel.
    void paintEvent(QPaintEvent* event) override;

private:
    int m_presetId = -1;
    QMenu* m_menu = nullptr;
};
