#pragma once

#include <QMainWindow>
#include <QString>

class IOrvexClient;

// The operator's main window. It owns the one radar client of the program.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    static const QString DefaultRadarServerUrl;
    static constexpr int ReconnectTimeoutMs = 2000;

    explicit MainWindow(QWidget* parent = nullptr);
    ~MainWindow() override;

    IOrvexClient* radarClient() const { return m_radarClient; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void doSetupRadarClient(int protocolVersion);
    void doUnsetRadarClient();
    void doSetRadarServerUrl(const QString& url);

    QString m_baseTitle;
    IOrvexClient* m_radarClient = nullptr;
};
