#pragma once

#include <QMessageBox>
#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>

// Answers every message box that opens while it lives, with the given button, and
// counts them; onAsked runs before each answer. It looks for the box a few times a
// second, so it also catches boxes opened from inside a modal loop.
class QuestionAnswerer : public QObject
{
    Q_OBJECT

public:
    explicit QuestionAnswerer(QMessageBox::StandardButton answer,
                              std::function<void()> onAsked = {});

    int count = 0;
    QString title; // of the last box answered
    QString text;

private:
    QTimer m_poll;
};
