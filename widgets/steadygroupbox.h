#pragma once

#include <QGroupBox>
#include <QPixmap>
#include <QStyleOptionGroupBox>

// A group box whose frame is drawn once and kept until the box's look changes. A box
// holding values that change with every radar frame is repainted behind them each time,
// and the style measures the title and loads the frame's picture anew for every repaint.
class SteadyGroupBox : public QGroupBox
{
    Q_OBJECT

public:
    explicit SteadyGroupBox(QWidget* parent = nullptr);
    explicit SteadyGroupBox(const QString& title, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    // Whether the frame kept was drawn for this look of the box.
    bool isFrameFor(const QStyleOptionGroupBox& option, qreal devicePixelRatio) const;

    QPixmap m_frame;
    QRect m_titleRect;
    QStyleOptionGroupBox m_frameOption;
    const QStyle* m_frameStyle = nullptr;
    QFont m_frameFont;
};
