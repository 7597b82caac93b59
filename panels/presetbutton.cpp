#include "presetbutton.h"

#include <QMenu>
#include <QStyleOptionToolButton>
#include <QStylePainter>

namespace {
// The least width of a button, in average character widths: enough to tell it apart.
constexpr int MinimumWidthChars = 4;
} // namespace

PresetButton::PresetButton(int presetId, QWidget* parent)
    : QToolButton(parent)
    , m_presetId(presetId)
    , m_menu(new QMenu(this))
{
    // The buttons share the row equally, whatever their names' lengths.
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    setMinimumWidth(MinimumWidthChars * fontMetrics().averageCharWidth());
    setToolButtonStyle(Qt::ToolButtonTextOnly);
    setContextMenuPolicy(Qt::CustomContextMenu);

    connect(m_menu->addAction(tr("&Rename preset")), &QAction::triggered, this,
            [this] { emit renameRequested(m_presetId); });
    connect(m_menu->addAction(tr("&Update preset with current values")), &QAction::triggered, this,
            [this] { emit updateRequested(m_presetId); });
    m_menu->addSeparator();
    connect(m_menu->addAction(tr("&Delete preset")), &QAction::triggered, this,
            [this] { emit deleteRequested(m_presetId); });
    connect(this, &QWidget::customContextMenuRequested, this,
            [this](const QPoint& pos) { m_menu->popup(mapToGlobal(pos)); });
}

void PresetButton::paintEvent(QPaintEvent* event)
{
    Q_UNUSED(event)
    QStylePainter painter(this);
    QStyleOptionToolButton option;
    initStyleOption(&option);
    const QRect contents
        = style()->subControlRect(QStyle::CC_ToolButton, &option, QStyle::SC_ToolButton, this);
    const int room = contents.width() - 2 * style()->pixelMetric(QStyle::PM_ButtonMargin);
    option.text = fontMetrics().elidedText(text(), Qt::ElideRight, room);
    painter.drawComplexControl(QStyle::CC_ToolButton, option);
}
