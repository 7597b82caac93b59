#pragma once

#include "steadygroupbox.h"

// A group box that lights up while the mouse is over it, so that the operator sees
// which of many similar boxes the pointer is in.
class BacklightedGroupBox : public SteadyGroupBox
{
    Q_OBJECT
    Q_PROPERTY(bool backlighted READ isBacklighted WRITE setBacklighted)

public:
    explicit BacklightedGroupBox(QWidget* parent = nullptr);
    explicit BacklightedGroupBox(const QString& title, QWidget* parent = nullptr);

    bool isBacklighted() const { return m_backlighted; }
    void setBacklighted(bool backlighted);

    // The highlight of one colour: dark components get lighter, light ones darker.
    static QColor backlightColor(const QColor& color);

protected:
    void enterEvent(QEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    bool m_backlighted = true;
};
