#pragma once

#include <QGroupBox>
#include <QPixmap>
#include <QStyleOptionGroupBox>

// A group box that keeps its drawn frame while it is repainted again and again with the
// same look. A box holding values that change with every radar frame is repainted behind
// them each time, and the style measures the title and loads the frame's picture anew
// for every repaint.
class SteadyGroupBox : public QGroupBox
{
    Q_OBJECT

public:
    explicit SteadyGroupBox(QWidget* parent = nullptr);
    explicit SteadyGroupBox(const QString& title, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    // Whether the box looks as it did at the last paint.
    bool hasLook(const QStyleOptionGroupBox& option, qreal devicePixelRatio) const;

    QStyleOptionGroupBox m_look;
    const QStyle* m_lookStyle = nullptr;
    QFont m_lookFont;
    qreal m_lookRatio = 0;
    int m_paintsAlike = 0;
    QPixmap m_frame; // for the look, once kept
    QRect m_titleRect;
};
