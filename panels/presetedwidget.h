#pragma once

#include "groupedwidget.h"

#include <QJsonArray>
#include <QJsonObject>

class QAbstractButton;
class QLayout;

// A panel whose input values the operator keeps as named presets, shown as a row of
// buttons: a click fills the panel's inputs from the preset, nothing is sent. The list
// lives in the current work profile; every change of it is announced at once, and the
// profile hands it back on every application of a profile. A panel supplies three
// hooks: whether an object from the profile is a usable preset, how to fill its inputs
// from one, and its present values as one.
class PresetedWidget : public GroupedWidget
{
    Q_OBJECT

public:
    explicit PresetedWidget(QWidget* parent = nullptr);

    const QJsonArray& presets() const { return m_presets; }
    void setPresetButtonsLayout(QLayout* layout);

    // The panel's hooks. A preset's values carry the panel's own keys; "name" is the
    // list's.
    virtual bool checkPreset(const QJsonObject& preset) const = 0;
    virtual void applyPreset(const QJsonObject& preset) = 0;
    virtual QJsonObject currentPreset() const = 0;

    // Asks the operator for a name and appends the values under it.
    void addPreset(const QJsonObject& values);
    // Fills the panel from the preset at the index; nothing for an invalid index.
    void applyPreset(int index);
    // Plain list edits: no buttons rebuilt, nothing announced.
    void insertPreset(int index, const QString& name, const QJsonObject& values);
    void deletePreset(int index);

public slots:
    // The list as the profile holds it; unusable elements are dropped, and an empty
    // list gets a default preset of the panel's present values.
    void setPresets(const QJsonArray& presets);

signals:
    void presetsChanged(const QJsonArray& presets);

protected slots:
    void onPresetButtonClicked(int index);
    void onPresetRenameRequested(int index);
    void onPresetUpdateRequested(int index);
    void onPresetDeleteRequested(int index);

protected:
    // Keeps the add button square at the height of a button of the panel, its "+"
    // in a smaller font than the panel's.
    void doFitAddPresetButton(QAbstractButton* addButton, const QWidget* model) const;

private:
    bool isValidIndex(int index) const { return index >= 0 && index < m_presets.size(); }
    // The operator's name for a preset; empty when cancelled.
    QString askPresetName(const QString& name);
    void emitPresets();
    void updatePresetButtons();

    QJsonArray m_presets;
    QLayout* m_buttonsLayout = nullptr;
    bool m_emittingPresets = false; // the profile's answer to our own change is ignored
};
