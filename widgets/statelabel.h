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
};
