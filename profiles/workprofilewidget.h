#pragma once

#include "standalonewidget.h"

class QAbstractButton;
class WorkProfileHandler;

namespace Ui {
class WorkProfileWidget;
}

// The window in which the operator lists, adds, renames, deletes and switches work
// profiles. It owns the program's one WorkProfileHandler. Nothing is written to the
// settings file here; that happens when the main window closes.
class WorkProfileWidget : public StandaloneWidget
{
    Q_OBJECT

public:
    explicit WorkProfileWidget(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
    ~WorkProfileWidget() override;

    WorkProfileHandler* profileHandler() const { return m_handler; }

public slots:
    void onProfileChanged();
    void doRevertCurrentRow();

private slots:
    void on_allProfilesList_currentRowChanged(int row);
    void on_appendProfileButton_clicked();
    void on_deleteProfileButton_clicked();
    void on_saveProfileButtonBox_clicked(QAbstractButton* button);
    void on_applyProfileButtonBox_clicked(QAbstractButton* button);

protected:
    void showEvent(QShowEvent* event) override;

private:
    bool isValidRow(int row) const;
    bool checkUnsavedEdit();
    void doRebuildList();
    void doUpdateButtons();

    Ui::WorkProfileWidget* m_ui = nullptr;
    WorkProfileHandler* m_handler = nullptr;
    bool m_profileChanged = false; // the name edit holds an edit not yet saved
    int m_previousRow = -1;
};
