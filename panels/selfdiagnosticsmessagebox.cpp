#include "selfdiagnosticsmessagebox.h"

namespace {

constexpr quint16 RadarNormalBit = 0x0001;

// The units the radar tests, with the bit that is set when the unit is sound.
struct Unit
{
    quint16 bit;
    const char* name;
};
const Unit Units[] = {
    {0x0002, QT_TRANSLATE_NOOP("SelfDiagnosticsMessageBox", "AMP1")},
    {0x0004, QT_TRANSLATE_NOOP("SelfDiagnosticsMessageBox", "AMP2")},
    {0x0008, QT_TRANSLATE_NOOP("SelfDiagnosticsMessageBox", "PADC")},
    {0x0010, QT_TRANSLATE_NOOP("SelfDiagnosticsMessageBox", "TRSC")},
    {0x0020, QT_TRANSLATE_NOOP("SelfDiagnosticsMessageBox", "PLLC")},
};

} // namespace

SelfDiagnosticsMessageBox::SelfDiagnosticsMessageBox(quint16 data, QWidget* parent)
    : QMessageBox(parent)
{
    const bool normal = data & RadarNormalBit;
    QString text = QStringLiteral("%1\n%2 %3.\n")
                       .arg(tr("Self-diagnosis completed."), tr("Radar is functioning"),
                            normal ? tr("normally") : tr("wrong"));
    if (!normal) {
        for (const Unit& unit : Units)
            text += QStringLiteral("\n%1\t%2")
                        .arg(tr(unit.name), data & unit.bit ? tr("ok") : tr("bad"));
    }
    setWindowTitle(tr("Radar self-diagnosis"));
    setText(text);
    setIcon(normal ? Information : Warning);
    setStandardButtons(Ok);
}

void SelfDiagnosticsMessageBox::showResult(QWidget* parent, quint16 data)
{
    SelfDiagnosticsMessageBox box(data, parent);
    box.exec();
}
