#pragma once

#include <QWidget>

// A widget that lives as a window of its own: either a free window, or a modal tool
// window centred over the window that opened it.
class StandaloneWidget : public QWidget
{
    Q_OBJECT

public:
    explicit StandaloneWidget(QWidget* parent = nullptr, Qt::WindowFlags flags = {});

    void showStandalone(bool asTool, QWidget* owner, const QString& title);

signals:
    void aboutToClose();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void doCentreOver(QWidget* owner);
};
