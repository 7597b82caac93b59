#include "roadconfigwidget.h"

#include "advancedcombobox.h"
#include "roadconfigkeys.h"
#include "roadconfigvalue.h"
#include "ui_roadconfigwidget.h"

#include <QCloseEvent>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFrame>
#include <QJsonArray>
#include <QLabel>
#include <QMessageBox>
#include <QScrollArea>
#include <QScrollBar>
#include <QtMath>
#include <QToolButton>

#include <algorithm>

namespace K = RoadConfigKeys;

namespace {
constexpr int FieldDecimals = 2;

// Widths of the strips of the cross-section, metres.
constexpr double MinPartWidth = 0.0;
constexpr double MaxPartWidth = 10.0;
constexpr double PartWidthStep = 0.1;
constexpr double DefaultMedianWidth = 0.0;
constexpr double DefaultLaneWidth = 3.5;
constexpr double DefaultRoadsideWidth = 2.0;

// Lateral shift of the whole road, metres.
constexpr double DefaultOriginOffset = 0.0;

// Curve radius and section length, metres, measured along the road axis. Curves tighter
// than 10 m are refused by the road builder anyway.
constexpr double MinRadius = 10.0;
constexpr double MaxRadius = 10000.0;
constexpr double DefaultRadius = 100.0;
constexpr double MinSectionLength = 0.1;
constexpr double MaxEditedSectionLength = 500.0;
constexpr double DefaultSectionLength = 100.0;
constexpr double SectionFieldStep = 1.0;

// Grid columns of the section rows; row 0 of both grids holds the headers.
constexpr int SectionCaptionColumn = 0;
constexpr int SectionKindColumn = 1;
constexpr int SectionRadiusColumn = 2;
constexpr int SectionLengthColumn = 3;

double defaultWidth(RoadConfigWidget::PartType type)
{
    switch (type) {
    case RoadConfigWidget::MedianStrip: return DefaultMedianWidth;
    case RoadConfigWidget::Lane: return DefaultLaneWidth;
    case RoadConfigWidget::Roadside: return DefaultRoadsideWidth;
    }
    return DefaultLaneWidth;
}

QDoubleSpinBox* makeSpin(QWidget* parent, const QString& objectName, double minimum, double maximum,
                         double step, double value)
{
    auto* spin = new QDoubleSpinBox(parent);
    spin->setObjectName(objectName);
    spin->setDecimals(FieldDecimals);
    spin->setRange(minimum, maximum);
    spin->setSingleStep(step);
    spin->setValue(value);
    return spin;
}
} // namespace

RoadConfigWidget::RoadConfigWidget(QWidget* parent, Qt::WindowFlags flags)
    : StandaloneWidget(parent, flags)
    , m_ui(new Ui::RoadConfigWidget)
{
    m_ui->setupUi(this);
    connect(m_ui->originOffsetSpin, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
            &RoadConfigWidget::onConfigChanged);
    doCreatePartRows();
    doCreateSectionRows();
    // The rows scroll up and down only: each scroll area is as wide as its rows plus
    // room for the vertical scroll bar.
    for (QScrollArea* area : {m_ui->roadPartsScrollArea, m_ui->roadSectionsScrollArea}) {
        area->setMinimumWidth(area->widget()->minimumSizeHint().width()
                              + area->verticalScrollBar()->sizeHint().width());
    }
    // A fresh window shows what an empty configuration (a new work profile) stands for.
    setRoadConfig(QJsonObject());
}

RoadConfigWidget::~RoadConfigWidget()
{
    delete m_ui;
}

void RoadConfigWidget::doCreatePartRows()
{
    // Top to bottom the rows run across the road from left to right, as seen when
    // looking along the axis.
    doCreatePartRow(RoadsideSlot, Roadside, QStringLiteral("leftRoadsideWidthSpin"));
    m_ui->roadPartsGrid->addWidget(doCreateSeparator(), m_ui->roadPartsGrid->rowCount(), 0, 1, 2);
    for (int slot = MaxLaneCount; slot >= 1; --slot)
        doCreatePartRow(slot, Lane, QStringLiteral("leftLaneWidthSpin%1").arg(slot));
    m_leftLanesSeparator = doCreateSeparator();
    m_ui->roadPartsGrid->addWidget(m_leftLanesSeparator, m_ui->roadPartsGrid->rowCount(), 0, 1, 2);
    doCreatePartRow(0, MedianStrip, QStringLiteral("medianStripWidthSpin"));
    m_rightLanesSeparator = doCreateSeparator();
    m_ui->roadPartsGrid->addWidget(m_rightLanesSeparator, m_ui->roadPartsGrid->rowCount(), 0, 1, 2);
    for (int slot = 1; slot <= MaxLaneCount; ++slot)
        doCreatePartRow(-slot, Lane, QStringLiteral("rightLaneWidthSpin%1").arg(slot));
    m_ui->roadPartsGrid->addWidget(doCreateSeparator(), m_ui->roadPartsGrid->rowCount(), 0, 1, 2);
    doCreatePartRow(-RoadsideSlot, Roadside, QStringLiteral("rightRoadsideWidthSpin"));
}

void RoadConfigWidget::doCreatePartRow(int slot, PartType type, const QString& objectName)
{
    QWidget* contents = m_ui->roadPartsContents;
    PartRow row;
    row.type = type;
    switch (type) {
    case MedianStrip: row.caption = new QLabel(tr("Median strip"), contents); break;
    case Lane: row.caption = new QLabel(tr("Lane"), contents); break;
    case Roadside: row.caption = new QLabel(tr("Roadside"), contents); break;
    }
    row.width = makeSpin(contents, objectName, MinPartWidth, MaxPartWidth, PartWidthStep,
                         defaultWidth(type));
    connect(row.width, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
            &RoadConfigWidget::onConfigChanged);
    const int gridRow = m_ui->roadPartsGrid->rowCount();
    m_ui->roadPartsGrid->addWidget(row.caption, gridRow, 0);
    m_ui->roadPartsGrid->addWidget(row.width, gridRow, 1);
    m_partRows.insert(slot, row);
}

QFrame* RoadConfigWidget::doCreateSeparator()
{
    auto* line = new QFrame(m_ui->roadPartsContents);
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    return line;
}

void RoadConfigWidget::doCreateSectionRows()
{
    QWidget* contents = m_ui->roadSectionsContents;
    for (int number = 1; number <= MaxSectionCount; ++number) {
        SectionRow row;
        row.caption = new QLabel(QStringLiteral("%1 %2").arg(tr("Section")).arg(number), contents);
        row.kind = new AdvancedComboBox(contents);
        row.kind->setObjectName(QStringLiteral("sectionKindCombo%1").arg(number));
        row.kind->addItem(tr("straight"), Straight);
        row.kind->addItem(tr("left curve"), LeftCurve);
        row.kind->addItem(tr("right curve"), RightCurve);
        row.radius = makeSpin(contents, QStringLiteral("sectionRadiusSpin%1").arg(number),
                              MinRadius, MaxRadius, SectionFieldStep, DefaultRadius);
        row.length = makeSpin(contents, QStringLiteral("sectionLengthSpin%1").arg(number),
                              MinSectionLength, MaxEditedSectionLength, SectionFieldStep,
                              DefaultSectionLength);
        // A straight section has no radius: the field is greyed out but keeps its value
        // for when the section is turned into a curve again.
        row.radius->setEnabled(false);
        QDoubleSpinBox* radius = row.radius;
        AdvancedComboBox* kind = row.kind;
        connect(row.kind, QOverload<int>::of(&QComboBox::currentIndexChanged), this, [=] {
            radius->setEnabled(kind->currentData().toInt() != Straight);
            onConfigChanged();
        });
        connect(row.radius, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
                &RoadConfigWidget::onConfigChanged);
        connect(row.length, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
                &RoadConfigWidget::onConfigChanged);
        m_ui->roadSectionsGrid->addWidget(row.caption, number, SectionCaptionColumn);
        m_ui->roadSectionsGrid->addWidget(row.kind, number, SectionKindColumn);
        m_ui->roadSectionsGrid->addWidget(row.radius, number, SectionRadiusColumn);
        m_ui->roadSectionsGrid->addWidget(row.length, number, SectionLengthColumn);
        m_sectionRows.insert(number, row);
    }
}

void RoadConfigWidget::doResetRows()
{
    m_ui->originOffsetSpin->setValue(DefaultOriginOffset);
    for (const PartRow& row : qAsConst(m_partRows))
        row.width->setValue(defaultWidth(row.type));
    for (const SectionRow& row : qAsConst(m_sectionRows)) {
        row.kind->setCurrentIndexByItemData(Straight);
        row.radius->setValue(DefaultRadius);
        row.length->setValue(DefaultSectionLength);
    }
}

void RoadConfigWidget::setRoadConfig(const QJsonObject& config)
{
    // Whatever the object leaves out shows its default, never what an earlier
    // configuration left in the rows.
    doResetRows();
    m_ui->originOffsetSpin->setValue(
        RoadConfigValue::number(config.value(K::OriginOffset), DefaultOriginOffset));

    // Parts by number; a key that is no whole number or a value that is no object
    // describes no strip of the road.
    QMap<int, QJsonObject> left, right;
    const QJsonObject parts = config.value(K::Parts).toObject();
    for (auto it = parts.constBegin(); it != parts.constEnd(); ++it) {
        bool isNumber = false;
        const int number = it.key().toInt(&isNumber);
        const QJsonObject part = it.value().toObject();
        if (!isNumber || part.isEmpty())
            continue;
        if (number == 0)
            m_partRows.value(0).width->setValue(
                RoadConfigValue::number(part.value(K::Width), DefaultMedianWidth));
        else
            (number > 0 ? left : right).insert(number, part);
    }
    QList<QJsonObject> rightOutward = right.values();
    std::reverse(rightOutward.begin(), rightOutward.end()); // -1, -2, ... away from the median
    m_leftLaneCount = doLoadSide(left.values(), 1);
    m_rightLaneCount = doLoadSide(rightOutward, -1);

    int sectionCount = 0;
    const QJsonArray sections = config.value(K::Sections).toArray();
    for (const QJsonValue& value : sections) {
        if (sectionCount == MaxSectionCount)
            break;
        if (!value.isObject())
            continue;
        const QJsonObject section = value.toObject();
        const SectionRow row = m_sectionRows.value(++sectionCount);
        const double radius = RoadConfigValue::number(section.value(K::Radius), 0.0);
        if (section.value(K::IsCurved).toBool()) {
            row.kind->setCurrentIndexByItemData(radius > 0.0 ? LeftCurve : RightCurve);
            row.radius->setValue(qAbs(radius));
        }
        row.length->setValue(
            RoadConfigValue::number(section.value(K::Length), DefaultSectionLength));
    }
    // A road has at least one section; without any, the first row shows its defaults.
    m_sectionCount = qMax(MinSectionCount, sectionCount);

    doUpdateRows();
    doUpdateButtons();
    // A configuration just loaded holds nothing that could be lost.
    m_configChanged = false;
    m_savedConfig = makeRoadConfig();
}

int RoadConfigWidget::doLoadSide(const QList<QJsonObject>& outwardParts, int side)
{
    // The lanes fill the rows from the median strip outwards, as many as there are rows;
    // the outermost strip that is no lane is the roadside.
    int lanes = 0;
    for (const QJsonObject& part : outwardParts) {
        if (part.value(K::IsLane).toBool()) {
            if (lanes == MaxLaneCount)
                continue;
            ++lanes;
            m_partRows.value(side * lanes)
                .width->setValue(RoadConfigValue::number(part.value(K::Width), DefaultLaneWidth));
        } else {
            m_partRows.value(side * RoadsideSlot)
                .width->setValue(
                    RoadConfigValue::number(part.value(K::Width), DefaultRoadsideWidth));
        }
    }
    return lanes;
}

void RoadConfigWidget::onConfigChanged()
{
    m_configChanged = true;
}

bool RoadConfigWidget::doChangeCount(int& count, int value, int minimum, int maximum)
{
    if (value < minimum || value > maximum)
        return false;
    count = value;
    doUpdateRows();
    doUpdateButtons();
    onConfigChanged();
    return true;
}

void RoadConfigWidget::on_appendLeftLaneButton_clicked()
{
    doChangeCount(m_leftLaneCount, m_leftLaneCount + 1, 0, MaxLaneCount);
}

void RoadConfigWidget::on_removeLeftLaneButton_clicked()
{
    doChangeCount(m_leftLaneCount, m_leftLaneCount - 1, 0, MaxLaneCount);
}

void RoadConfigWidget::on_appendRightLaneButton_clicked()
{
    doChangeCount(m_rightLaneCount, m_rightLaneCount + 1, 0, MaxLaneCount);
}

void RoadConfigWidget::on_removeRightLaneButton_clicked()
{
    doChangeCount(m_rightLaneCount, m_rightLaneCount - 1, 0, MaxLaneCount);
}

void RoadConfigWidget::on_appendSectionButton_clicked()
{
    doChangeCount(m_sectionCount, m_sectionCount + 1, MinSectionCount, MaxSectionCount);
}

void RoadConfigWidget::on_removeSectionButton_clicked()
{
    doChangeCount(m_sectionCount, m_sectionCount - 1, MinSectionCount, MaxSectionCount);
}

void RoadConfigWidget::doUpdateRows()
{
    for (int slot = 1; slot <= MaxLaneCount; ++slot) {
        for (const int side : {1, -1}) {
            const PartRow row = m_partRows.value(side * slot);
            const bool shown = slot <= (side > 0 ? m_leftLaneCount : m_rightLaneCount);
            row.caption->setVisible(shown);
            row.width->setVisible(shown);
        }
    }
    m_leftLanesSeparator->setVisible(m_leftLaneCount > 0);
    m_rightLanesSeparator->setVisible(m_rightLaneCount > 0);
    for (auto it = m_sectionRows.constBegin(); it != m_sectionRows.constEnd(); ++it) {
        const bool shown = it.key() <= m_sectionCount;
        it->caption->setVisible(shown);
        it->kind->setVisible(shown);
        it->radius->setVisible(shown);
        it->length->setVisible(shown);
    }
}

void RoadConfigWidget::doUpdateButtons()
{
    m_ui->appendLeftLaneButton->setEnabled(m_leftLaneCount < MaxLaneCount);
    m_ui->removeLeftLaneButton->setEnabled(m_leftLaneCount > 0);
    m_ui->appendRightLaneButton->setEnabled(m_rightLaneCount < MaxLaneCount);
    m_ui->removeRightLaneButton->setEnabled(m_rightLaneCount > 0);
    m_ui->appendSectionButton->setEnabled(m_sectionCount < MaxSectionCount);
    m_ui->removeSectionButton->setEnabled(m_sectionCount > MinSectionCount);
}

QJsonObject RoadConfigWidget::makeRoadConfig() const
{
    // Parts are numbered outwards from the median strip (0): positive on the left of the
    // direction of travel along the axis, negative on the right, the roadsides outermost.
    QJsonObject parts;
    const auto addPart = [&](int number, int slot) {
        const PartRow row = m_partRows.value(slot);
        parts.insert(QString::number(number),
                     QJsonObject{{K::Width, row.width->value()}, {K::IsLane, row.type == Lane}});
    };
    addPart(-(m_rightLaneCount + 1), -RoadsideSlot);
    for (int lane = m_rightLaneCount; lane >= 1; --lane)
        addPart(-lane, -lane);
    addPart(0, 0);
    for (int lane = 1; lane <= m_leftLaneCount; ++lane)
        addPart(lane, lane);
    addPart(m_leftLaneCount + 1, RoadsideSlot);

    QJsonArray sections;
    for (int number = 1; number <= m_sectionCount; ++number) {
        const SectionRow row = m_sectionRows.value(number);
        const int kind = row.kind->currentData().toInt();
        double radius = 0.0;
        if (kind == LeftCurve)
            radius = row.radius->value();
        else if (kind == RightCurve)
            radius = -row.radius->value();
        sections.append(QJsonObject{{K::IsCurved, kind != Straight},
                                    {K::Radius, radius},
                                    {K::Length, row.length->value()}});
    }

    return QJsonObject{{K::Parts, parts},
                       {K::OriginOffset, m_ui->originOffsetSpin->value()},
                       {K::Sections, sections}};
}

void RoadConfigWidget::doApply()
{
    const QJsonObject config = makeRoadConfig();
    m_savedConfig = config;
    emit roadConfigChanged(config);
    m_configChanged = false;
    doUpdateButtons();
}

void RoadConfigWidget::on_roadConfigButtonBox_clicked(QAbstractButton* button)
{
    switch (m_ui->roadConfigButtonBox->standardButton(button)) {
    case QDialogButtonBox::Apply: doApply(); break;
    case QDialogButtonBox::Close: close(); break;
    default: break;
    }
}

void RoadConfigWidget::closeEvent(QCloseEvent* event)
{
    // The title bar's close button asks the same question as the Close button.
    if (isVisible() && m_configChanged) {
        const auto answer = QMessageBox::question(this, tr("Warning"),
                                                  tr("All unsaved data will be lost. Continue?"),
                                                  QMessageBox::Yes | QMessageBox::No);
        if (answer != QMessageBox::Yes) {
            event->ignore();
            return;
        }
        // The edits are dropped as promised: the next opening shows the road as it was
        // last loaded or applied.
        const QJsonObject saved = m_savedConfig;
        setRoadConfig(saved);
    }
    StandaloneWidget::closeEvent(event);
}
