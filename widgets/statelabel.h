#pragma once

#include <QLabel>

// A label that shows a state: its text colour and font size can be set directly, and
// it can be kept from shrinking when its text gets shorter.
class StateLabel : public QLabel
{
    Q_OBJECT

public:
    explicit StateLabel(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
    explicit StateLabel(const QString& text, QWidget* parent = nullptr, Qt::WindowFlags flags = {});

    void setTextColor(const QColor& color);
    void setFontPointSize(int size);
    void setFontPixelSize(int size);
    // Makes the present width the least width, so that the label never shrinks.
    void fixMinWidth();
    // With a mode other than Qt::ElideNone the label gives way when its row runs out of
    // room: it may become narrower than its text, which it then cuts with an ellipsis.
    // A long report in a status bar so never widens the window.
    void setElideMode(Qt::TextElideMode mode);
    Qt::TextElideMode elideMode() const { return m_elideMode; }

    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Qt::TextElideMode m_elideMode = Qt::ElideNone;
};
