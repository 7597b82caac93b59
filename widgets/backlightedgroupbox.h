#pragma once

#include <QGroupBox>
#include <QPixmap>
#include <QStyleOptionGroupBox>

// A group box that lights up while the mouse is over it, so that the operator sees
// which of many similar boxes the pointer is in.
//
// Its frame is drawn once and kept: a box holding values that change with every radar
// frame is repainted behind them each time, and the style measures the title and loads
// the frame's picture anew for every repaint.
class BacklightedGroupBox : public QGroupBox
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
    void paintEvent(QPaintEvent* event) override;

private:
    // Whether the frame kept was drawn for this look of the box.
    bool isFrameFor(const QStyleOptionGroupBox& option, qreal devicePixelRatio) const;

    bool m_backlighted = true;
    QPixmap m_frame;
    QRect m_titleRect;
    QStyleOptionGroupBox m_frameOption;
    const QStyle* m_frameStyle = nullptr;
    QFont m_frameFont;
};
