#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

// Answers the text input dialogs that open while it lives, one answer each in turn: a
// text is entered and confirmed, a null string cancels. It records what each dialog
// asked, and looks for dialogs a few times a second, also inside their modal loops.
class InputDialogAnswerer : public QObject
{
    Q_OBJECT

public:
    explicit InputDialogAnswerer(const QStringList& answers);

    int count = 0;
    QString title; // of the last dialog answered
    QString label;
    QString offered; // the text the dialog was pre-filled with

private:
    QStringList m_answers;
    QTimer m_poll;
};
