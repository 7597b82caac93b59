#pragma once

#include <QMessageBox>

// The radar's self-diagnosis report. Bit 0 of the 16-bit word says whether the radar
// works normally; when it does not, bits 1 to 5 tell which of its units failed.
class SelfDiagnosticsMessageBox : public QMessageBox
{
    Q_OBJECT

public:
    explicit SelfDiagnosticsMessageBox(quint16 data, QWidget* parent = nullptr);

    // Shows the report for the word and returns when the operator closed it.
    static void showResult(QWidget* parent, quint16 data);
};
