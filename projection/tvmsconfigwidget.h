#pragma once

#include "standalonewidget.h"

#include <QJsonObject>

class QAbstractButton;

namespace Ui {
class TvmsConfigWidget;
}

// The window in which the operator edits the camera configuration: where the camera
// sits and how it is turned relative to the radar, its angle of view and how late its
// video is. Apply publishes the whole configuration; closing over unapplied edits asks
// first. A work profile without a camera configuration gets this window's values.
class TvmsConfigWidget : public StandaloneWidget
{
    Q_OBJECT

public:
    explicit TvmsConfigWidget(QWidget* parent = nullptr, Qt::WindowFlags flags = {});
    ~TvmsConfigWidget() override;

    bool isConfigChanged() const { return m_configChanged; }
    // The configuration the controls hold.
    QJsonObject makeConfig() const;

public slots:
    void setTvmsConfig(const QJsonObject& config);
    void onConfigChanged();

signals:
    void tvmsConfigChanged(const QJsonObject& config);

private slots:
    void on_tvmsConfigButtonBox_clicked(QAbstractButton* button);

protected:
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void doLoadStoredConfig();
    void doApply();
    void doUpdateButtons();

    Ui::TvmsConfigWidget* m_ui = nullptr;
    QJsonObject m_storedConfig;
    bool m_configChanged = false;
    bool m_emittingConfig = false;
};
