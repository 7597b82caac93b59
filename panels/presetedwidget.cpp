#include "presetedwidget.h"

#include "presetbutton.h"
#include "profilekeys.h"

#include <QAbstractButton>
#include <QInputDialog>
#include <QLayout>

namespace {
// The add button's "+" is drawn in this share of the panel's font size.
constexpr double AddButtonFontShare = 0.6;
} // namespace

PresetedWidget::PresetedWidget(QWidget* parent)
    : GroupedWidget(parent)
{ }

void PresetedWidget::setPresetButtonsLayout(QLayout* layout)
{
    m_buttonsLayout = layout;
}

void PresetedWidget::setPresets(const QJsonArray& presets)
{
    // The profile handler answers every presetsChanged with its own change signal, at
    // once; that echo of our own list is not taken in again.
    if (m_emittingPresets)
        return;
    m_presets = QJsonArray();
    for (const QJsonValue& element : presets) {
        const QJsonObject preset = element.toObject();
        if (preset.isEmpty() || preset.value(ProfileKeys::Name).toString().isEmpty()
            || !checkPreset(preset))
            continue;
        m_presets.append(preset);
    }
    if (m_presets.isEmpty())
        insertPreset(0, tr("Default preset"), currentPreset());
    updatePresetButtons();
    // The cleaned list goes back to the profile.
    emitPresets();
}

void PresetedWidget::addPreset(const QJsonObject& values)
{
    const QString name = askPresetName(tr("New preset"));
    if (name.isEmpty())
        return;
    insertPreset(m_presets.size(), name, values);
    updatePresetButtons();
    emitPresets();
}

void PresetedWidget::applyPreset(int index)
{
    if (isValidIndex(index))
        applyPreset(m_presets.at(index).toObject());
}

void PresetedWidget::insertPreset(int index, const QString& name, const QJsonObject& values)
{
    if (index < 0 || index > m_presets.size())
        return;
    QJsonObject preset = values;
    preset.insert(ProfileKeys::Name, name);
    m_presets.insert(index, preset);
}

void PresetedWidget::deletePreset(int index)
{
    if (isValidIndex(index))
        m_presets.removeAt(index);
}

void PresetedWidget::onPresetButtonClicked(int index)
{
    applyPreset(index);
}

void PresetedWidget::onPresetRenameRequested(int index)
{
    if (!isValidIndex(index))
        return;
    const QJsonObject preset = m_presets.at(index).toObject();
    const QString name = askPresetName(preset.value(ProfileKeys::Name).toString());
    if (!name.isEmpty()) {
        deletePreset(index);
        insertPreset(index, name, preset);
    }
    updatePresetButtons();
    emitPresets();
}

void PresetedWidget::onPresetUpdateRequested(int index)
{
    if (!isValidIndex(index))
        return;
    const QString name = m_presets.at(index).toObject().value(ProfileKeys::Name).toString();
    deletePreset(index);
    insertPreset(index, name, currentPreset());
    updatePresetButtons();
    emitPresets();
}

void PresetedWidget::onPresetDeleteRequested(int index)
{
    // The last one may go too: the default preset comes back with the next profile.
    if (!isValidIndex(index))
        return;
    deletePreset(index);
    updatePresetButtons();
    emitPresets();
}

QString PresetedWidget::askPresetName(const QString& name)
{
    return QInputDialog::getText(window(), tr("Preset name"), tr("Enter new preset name"),
                                 QLineEdit::Normal, name);
}

void PresetedWidget::emitPresets()
{
    m_emittingPresets = true;
    emit presetsChanged(m_presets);
    m_emittingPresets = false;
}

void PresetedWidget::updatePresetButtons()
{
    if (!m_buttonsLayout)
        return;
    setUpdatesEnabled(false);
    // The button whose menu asked for this may still be inside its own signal.
    while (QLayoutItem* item = m_buttonsLayout->takeAt(0)) {
        if (QWidget* widget = item->widget()) {
            widget->hide();
            widget->deleteLater();
        }
        delete item;
    }
    // Rebuilt wholesale, so that a button's index is always its preset's place.
    for (int i = 0; i < m_presets.size(); ++i) {
        auto* button = new PresetButton(i, this);
        const QString name = m_presets.at(i).toObject().value(ProfileKeys::Name).toString();
        button->setText(name);
        button->setToolTip(name);
        connect(button, &PresetButton::clicked, this, [this, i] { onPresetButtonClicked(i); });
        connect(button, &PresetButton::renameRequested, this,
                &PresetedWidget::onPresetRenameRequested);
        connect(button, &PresetButton::updateRequested, this,
                &PresetedWidget::onPresetUpdateRequested);
        connect(button, &PresetButton::deleteRequested, this,
                &PresetedWidget::onPresetDeleteRequested);
        m_buttonsLayout->addWidget(button);
    }
    setUpdatesEnabled(true);
}

void PresetedWidget::doFitAddPresetButton(QAbstractButton* addButton, const QWidget* model) const
{
    const int side = model->height();
    addButton->setFixedSize(side, side);
    QFont smaller = font();
    if (smaller.pointSizeF() > 0)
        smaller.setPointSizeF(smaller.pointSizeF() * AddButtonFontShare);
    else
        smaller.setPixelSize(qMax(1, qRound(smaller.pixelSize() * AddButtonFontShare)));
    addButton->setFont(smaller);
}
