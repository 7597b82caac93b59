#include "collapsiblegroupbox.h"

#include <QLabel>
#include <QMouseEvent>
#include <QStyle>
#include <QStyleOptionGroupBox>
#include <QVBoxLayout>

namespace {
// Shown in front of the title: what a click on it will do.
const QString CollapsedMarker = QStringLiteral(" >  ");
const QString ExpandedMarker = QStringLiteral(" V  ");
// A collapsed box keeps a small frame around its hint.
constexpr int CollapsedMargin = 2;
constexpr int ExpandedMargin = 0;
} // namespace

CollapsibleGroupBox::CollapsibleGroupBox(QWidget* parent)
    : BacklightedGroupBox(parent)
{
    init();
}

CollapsibleGroupBox::CollapsibleGroupBox(const QString& title, QWidget* parent)
    : BacklightedGroupBox(parent)
{
    init();
    setTitle(title);
}

CollapsibleGroupBox::~CollapsibleGroupBox()
{
    // Until the box is first shown, its own layout is not installed and so not owned.
    if (m_layout->parent() != this)
        delete m_layout;
}

void CollapsibleGroupBox::init()
{
    m_expandedSizePolicy = sizePolicy();

    m_collapsedLabel = new QLabel(tr("Click the title to expand"), this);
    m_collapsedLabel->setAlignment(Qt::AlignCenter);
    m_collapsedLabel->hide();
    m_container = new QWidget(this);
    m_container->hide();

    // Not installed yet: a form sets its own layout on the box after construction,
    // and that layout is handed on to the container when the box takes over.
    m_layout = new QVBoxLayout;
    m_layout->setContentsMargins(ExpandedMargin, ExpandedMargin, ExpandedMargin, ExpandedMargin);
    m_layout->addWidget(m_collapsedLabel);
    m_layout->addWidget(m_container);

    doUpdateTitle();
}

void CollapsibleGroupBox::setTitle(const QString& title)
{
    m_title = title;
    doUpdateTitle();
}

QLabel* CollapsibleGroupBox::collapsedLabel()
{
    doTakeOverContents();
    return m_collapsedLabel;
}

QWidget* CollapsibleGroupBox::containerWidget()
{
    doTakeOverContents();
    return m_container;
}

QRect CollapsibleGroupBox::titleArea() const
{
    QStyleOptionGroupBox option;
    initStyleOption(&option);
    const QRect label
        = style()->subControlRect(QStyle::CC_GroupBox, &option, QStyle::SC_GroupBoxLabel, this);
    // The whole width of the box, down to the bottom of the title text.
    return QRect(0, 0, width(), qMax(label.bottom() + 1, 1));
}

void CollapsibleGroupBox::setCollapsed(bool collapsed)
{
    const bool wasCollapsed = m_collapsed;
    m_collapsed = collapsed;
    m_collapsedLabel->setVisible(collapsed);
    m_container->setVisible(!collapsed);
    const int margin = collapsed ? CollapsedMargin : ExpandedMargin;
    m_layout->setContentsMargins(margin, margin, margin, margin);
    doUpdateTitle();
    if (wasCollapsed == collapsed)
        return;
    if (collapsed) {
        // A folded box must not take more height than its title and hint need.
        m_expandedSizePolicy = sizePolicy();
        setSizePolicy(m_expandedSizePolicy.horizontalPolicy(), QSizePolicy::Maximum);
    } else {
        setSizePolicy(m_expandedSizePolicy);
    }
    emit toggled(collapsed);
}

bool CollapsibleGroupBox::event(QEvent* event)
{
    // A disabled box (its panel waits for the radar) still folds when its title is
    // clicked; the toolkit would not hand a disabled widget its mouse.
    if (!isEnabled() && event->type() == QEvent::MouseButtonPress) {
        mousePressEvent(static_cast<QMouseEvent*>(event));
        return true;
    }
    if (!isEnabled() && event->type() == QEvent::MouseButtonRelease) {
        mouseReleaseEvent(static_cast<QMouseEvent*>(event));
        return true;
    }
    return BacklightedGroupBox::event(event);
}

void CollapsibleGroupBox::showEvent(QShowEvent* event)
{
    doTakeOverContents();
    setCollapsed(m_collapsed);
    BacklightedGroupBox::showEvent(event);
}

void CollapsibleGroupBox::mousePressEvent(QMouseEvent* event)
{
    m_pressed = event->button() == Qt::LeftButton;
    BacklightedGroupBox::mousePressEvent(event);
}

void CollapsibleGroupBox::mouseReleaseEvent(QMouseEvent* event)
{
    const bool click = m_pressed && titleArea().contains(event->pos());
    m_pressed = false;
    BacklightedGroupBox::mouseReleaseEvent(event);
    if (click) {
        // A receiver of clicked() may already have switched the box (the main window
        // does, through the work profile); the click must not then switch it back.
        const bool collapsed = !m_collapsed;
        emit clicked(collapsed);
        setCollapsed(collapsed);
    }
}

void CollapsibleGroupBox::doTakeOverContents()
{
    if (layout() != m_layout) {
        // Hands the form's layout, with the widgets it arranges, to the container.
        if (QLayout* formLayout = layout())
            m_container->setLayout(formLayout);
        setLayout(m_layout);
    }
    const auto children = findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
    for (QWidget* child : children) {
        if (child == m_collapsedLabel || child == m_container)
            continue;
        // Re-parenting hides a widget; bring back those that were not hidden on purpose.
        const bool wasHidden = child->isHidden();
        child->setParent(m_container);
        if (!wasHidden)
            child->show();
    }
}

void CollapsibleGroupBox::doUpdateTitle()
{
    QGroupBox::setTitle((m_collapsed ? CollapsedMarker : ExpandedMarker) + m_title);
}
