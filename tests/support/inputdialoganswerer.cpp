#include "inputdialoganswerer.h"

#include <QApplication>
#include <QInputDialog>

InputDialogAnswerer::InputDialogAnswerer(const QStringList& answers)
    : m_answers(answers)
{
    connect(&m_poll, &QTimer::timeout, this, [this] {
        auto* dialog = qobject_cast<QInputDialog*>(QApplication::activeModalWidget());
        if (!dialog || !dialog->isVisible() || m_answers.isEmpty())
            return;
        ++count;
        title = dialog->windowTitle();
        label = dialog->labelText();
        offered = dialog->textValue();
        const QString answer = m_answers.takeFirst();
        if (answer.isNull()) {
            dialog->reject();
            return;
        }
        dialog->setTextValue(answer);
        dialog->accept();
    });
    m_poll.start(5);
}
