#pragma once

#include "backlightedgroupbox.h"

#include <QSizePolicy>

class QLabel;
class QVBoxLayout;

// A group box that folds away to its title line when the title is clicked. The
// contents a form puts into the box are moved into an inner container widget, which is
// swapped for a one-line hint while the box is collapsed.
class CollapsibleGroupBox : public BacklightedGroupBox
{
    Q_OBJECT
    Q_PROPERTY(bool collapsed READ isCollapsed WRITE setCollapsed NOTIFY toggled)

public:
    explicit CollapsibleGroupBox(QWidget* parent = nullptr);
    explicit CollapsibleGroupBox(const QString& title, QWidget* parent = nullptr);
    ~CollapsibleGroupBox() override;

    // The plain title, without the collapse marker that the box shows in front of it.
    QString title() const { return m_title; }
    void setTitle(const QString& title);

    bool isCollapsed() const { return m_collapsed; }

    QLabel* collapsedLabel();
    QWidget* containerWidget();

    // The band at the top of the box in which a click toggles the box.
    QRect titleArea() const;

public slots:
    void setCollapsed(bool collapsed);

signals:
    // A left click on the title: the state the user asks for.
    void clicked(bool collapsed);
    // The collapsed state really changed.
    void toggled(bool collapsed);

protected:
    bool event(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void init();
    void doTakeOverContents();
    void doUpdateTitle();

    QString m_title;
    QVBoxLayout* m_layout = nullptr;
    QLabel* m_collapsedLabel = nullptr;
    QWidget* m_container = nullptr;
    bool m_collapsed = false;
    QSizePolicy m_expandedSizePolicy;
    bool m_pressed = false;
};
