#include "questionanswerer.h"

#include <QAbstractButton>
#include <QApplication>

QuestionAnswerer::QuestionAnswerer(QMessageBox::StandardButton answer,
                                   std::function<void()> onAsked)
{
    connect(&m_poll, &QTimer::timeout, this, [this, answer, onAsked] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (!box || !box->isVisible())
            return;
        ++count;
        title = box->windowTitle();
        text = box->text();
        if (onAsked)
            onAsked();
        box->button(answer)->click();
    });
    m_poll.start(5);
}
