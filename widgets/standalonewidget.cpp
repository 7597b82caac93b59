#include "standalonewidget.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QScreen>

namespace {
const QString WindowFontFamily = QStringLiteral("Sans");
constexpr int WindowFontPointSize = 10;
// Window managers may ignore a position of 0; 1 is the least that is kept.
constexpr int LeastWindowPosition = 1;
} // namespace

StandaloneWidget::StandaloneWidget(QWidget* parent, Qt::WindowFlags flags)
    : QWidget(parent, flags)
{
    setFont(QFont(WindowFontFamily, WindowFontPointSize));
}

void StandaloneWidget::showStandalone(bool asTool, QWidget* owner, const QString& title)
{
    setWindowTitle(title);
    if (!asTool) {
        show();
        return;
    }
    setParent(owner, Qt::Tool);
    setWindowModality(Qt::WindowModal);
    show();
    move(LeastWindowPosition, LeastWindowPosition);
    doCentreOver(owner);
    raise();
    activateWindow();
}

void StandaloneWidget::closeEvent(QCloseEvent* event)
{
    emit aboutToClose();
    QWidget::closeEvent(event);
}

void StandaloneWidget::doCentreOver(QWidget* owner)
{
    QPoint centre;
    if (owner && width() <= owner->width() && height() <= owner->height()) {
        centre = owner->mapToGlobal(QPoint(owner->width() / 2, owner->height() / 2));
    } else {
        // Too big for its owner: centre it on the owner's screen instead.
        QScreen* screen
            = owner ? QGuiApplication::screenAt(owner->mapToGlobal(QPoint(0, 0))) : nullptr;
        if (!screen && owner)
            screen = owner->screen();
        if (!screen)
            screen = QGuiApplication::primaryScreen();
        if (!screen)
            return;
        centre = screen->availableGeometry().center();
    }
    const int left = qMax(LeastWindowPosition, centre.x() - width() / 2);
    const int top = qMax(LeastWindowPosition, centre.y() - height() / 2);
    move(left, top);
}
