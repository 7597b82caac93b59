#include "workprofilewidget.h"

#include "ui_workprofilewidget.h"
#include "workprofilehandler.h"

#include <QMessageBox>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTimer>

namespace {
// Lets the list finish its own selection change before the old row is selected again.
constexpr int RevertRowDelayMs = 1;
} // namespace

WorkProfileWidget::WorkProfileWidget(QWidget* parent, Qt::WindowFlags flags)
    : StandaloneWidget(parent, flags)
    , m_ui(new Ui::WorkProfileWidget)
    , m_handler(new WorkProfileHandler(this))
{
    m_ui->setupUi(this);
    connect(m_ui->profileNameEdit, &QLineEdit::textEdited, this,
            &WorkProfileWidget::onProfileChanged);
    doUpdateButtons();
}

WorkProfileWidget::~WorkProfileWidget()
{
    delete m_ui;
}

void WorkProfileWidget::showEvent(QShowEvent* event)
{
    doRebuildList();
    const int current = m_handler->currentProfileId();
    if (isValidRow(current))
        m_ui->allProfilesList->setCurrentRow(current);
    doUpdateButtons();
    StandaloneWidget::showEvent(event);
}

bool WorkProfileWidget::isValidRow(int row) const
{
    return row >= 0 && row < m_ui->allProfilesList->count();
}

bool WorkProfileWidget::checkUnsavedEdit()
{
    if (!m_profileChanged)
        return true;
    const auto answer
        = QMessageBox::question(this, tr("Warning"), tr("All unsaved data will be lost. Continue?"),
                                QMessageBox::Yes | QMessageBox::No);
    if (answer != QMessageBox::Yes)
        return false;
    m_profileChanged = false;
    return true;
}

void WorkProfileWidget::doRebuildList()
{
    // Emptying the list is no row change of the user's: it must neither ask about nor
    // drop an unsaved edit.
    const QSignalBlocker blocker(m_ui->allProfilesList);
    m_ui->allProfilesList->clear();
    const QStringList names = m_handler->profileNames();
    const int current = m_handler->currentProfileId();
    for (int row = 0; row < names.size(); ++row) {
        const QString suffix = row == current ? tr(" [current]") : QString();
        m_ui->allProfilesList->addItem(names.at(row) + suffix);
    }
    m_previousRow = -1;
}

void WorkProfileWidget::doUpdateButtons()
{
    const int row = m_ui->allProfilesList->currentRow();
    m_ui->deleteProfileButton->setEnabled(isValidRow(row) && m_ui->allProfilesList->count() >= 2
                                          && row != m_handler->currentProfileId());
    if (QPushButton* save = m_ui->saveProfileButtonBox->button(QDialogButtonBox::Save))
        save->setEnabled(!m_ui->profileNameEdit->text().isEmpty() && m_profileChanged);
}

void WorkProfileWidget::onProfileChanged()
{
    m_profileChanged = true;
    doUpdateButtons();
}

void WorkProfileWidget::doRevertCurrentRow()
{
    // Back to the row whose edit the user kept; this is no new row change.
    const QSignalBlocker blocker(m_ui->allProfilesList);
    m_ui->allProfilesList->setCurrentRow(m_previousRow);
    doUpdateButtons();
}

void WorkProfileWidget::on_allProfilesList_currentRowChanged(int row)
{
    if (!isValidRow(row)) {
        m_previousRow = row;
        doUpdateButtons();
        return;
    }
    if (!checkUnsavedEdit()) {
        QTimer::singleShot(RevertRowDelayMs, this, &WorkProfileWidget::doRevertCurrentRow);
        return;
    }
    m_ui->profileNameEdit->setText(m_handler->profileNames().value(row));
    m_profileChanged = false;
    doUpdateButtons();
    m_previousRow = row;
}

void WorkProfileWidget::on_appendProfileButton_clicked()
{
    if (!checkUnsavedEdit())
        return;
    const int row = m_handler->appendProfile(m_ui->allProfilesList->currentRow());
    doRebuildList();
    m_ui->allProfilesList->setCurrentRow(row);
    // Ready for the new name to be typed over the copied one.
    m_ui->profileNameEdit->selectAll();
    m_ui->profileNameEdit->setFocus();
}

void WorkProfileWidget::on_deleteProfileButton_clicked()
{
    if (!checkUnsavedEdit())
        return;
    const int row = m_ui->allProfilesList->currentRow();
    if (isValidRow(row) && row != m_handler->currentProfileId())
        m_handler->removeProfile(row);
    doRebuildList();
    m_ui->allProfilesList->setCurrentRow(isValidRow(row) ? row
                                                         : m_ui->allProfilesList->count() - 1);
    doUpdateButtons();
}

void WorkProfileWidget::on_saveProfileButtonBox_clicked(QAbstractButton* button)
{
    if (m_ui->saveProfileButtonBox->standardButton(button) != QDialogButtonBox::Save)
        return;
    const int row = m_ui->allProfilesList->currentRow();
    if (!isValidRow(row))
        return;
    m_handler->renameProfile(row, m_ui->profileNameEdit->text());
    m_profileChanged = false;
    doRebuildList();
    m_ui->allProfilesList->setCurrentRow(row);
    doUpdateButtons();
}

void WorkProfileWidget::on_applyProfileButtonBox_clicked(QAbstractButton* button)
{
    switch (m_ui->applyProfileButtonBox->standardButton(button)) {
    case QDialogButtonBox::Apply:
        // No question here: the reselection below is a row change and asks then.
        m_handler->applyProfile(m_ui->allProfilesList->currentRow());
        doRebuildList();
        m_ui->allProfilesList->setCurrentRow(m_handler->currentProfileId());
        doUpdateButtons();
        break;
    case QDialogButtonBox::Close:
        if (checkUnsavedEdit())
            close();
        break;
    default: break;
    }
}
