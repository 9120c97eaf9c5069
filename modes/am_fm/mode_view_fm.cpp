// SPDX-License-Identifier: MIT
// The FM view (mode 2): rate, deviation and shape, kept within a factor 1000.
#include "modes/am_fm/mode_view_fm.h"

#include "modes/mode_types.h"
#include "widgets/frequency_edit.h"
#include "widgets/my_combo_box.h"
#include "widgets/my_form_layout.h"

#include <QCheckBox>
#include <QSettings>

#include <algorithm>
#include <cmath>

ModeViewFM::ModeViewFM(QWidget* parent)
    : ModeWidget("FM", 2, parent),
      rateEdit_(new FrequencyEdit(1000.0, this)),
      deviationEdit_(new FrequencyEdit(1000.0, this)),
      shapeCombo_(new MyComboBox(this)) {
  for (int value = ModShapeSine; value <= ModShapeRamp; ++value)
    shapeCombo_->addItem(modShapeTexts[value], value);

  formLayout->addRow("Enabled", enabledCheck());
  formLayout->addRow("Rate", rateEdit_);
  formLayout->addRow("Deviation", deviationEdit_);
  formLayout->addRow("Shape", shapeCombo_);

  connect(rateEdit_, &FrequencyEdit::valueChanged, this, &ModeViewFM::setRate);
  connect(deviationEdit_, &FrequencyEdit::valueChanged, this, &ModeViewFM::setDeviation);
  connect(shapeCombo_, QOverload<int>::of(&QComboBox::activated), this,
          &ModeViewFM::setShapePrivate);
  setDefaults();
}

double ModeViewFM::rate() const { return rateEdit_->value(); }

double ModeViewFM::deviation() const { return deviationEdit_->value(); }

void ModeViewFM::setDefaults() {
  setRate(1000.0);
  deviationEdit_->setValue(1000.0);
  emit updated();
  const double pulled = std::clamp(rate(), minFrequency, 1000.0 * couplingFactor);
  if (pulled != rate()) setRate(pulled);
  setShape(ModShapeSine);
}

void ModeViewFM::saveSettings(QSettings* settings) {
  settings->beginGroup("FM");
  settings->setValue("Rate", rate());
  settings->setValue("Deviation", deviation());
  settings->setValue("Shape", shape());
  settings->endGroup();
}

void ModeViewFM::loadSettings(QSettings* settings) {
  settings->beginGroup("FM");
  setRate(settings->value("Rate", rate()).toDouble());
  // Clamped, set, and the rate pulled into the window: what setDeviation does.
  setDeviation(settings->value("Deviation", deviation()).toDouble());
  shapeCombo_->selectValue(settings->value("Shape", shape()).toInt());
  emit updated();
  settings->endGroup();
}

void ModeViewFM::setRate(double rateHz) {
  const double r = clampOr(rateHz, minFrequency, maxFrequency, rate());
  rateEdit_->setValue(r);
  const double current = deviation();
  const double coupled = std::clamp(current, r / couplingFactor, r * couplingFactor);
  if (coupled != current) {
    deviationEdit_->setValue(std::clamp(coupled, minFrequency, maxFrequency));
    const double d = deviation();
    const double pulled = std::clamp(rate(), d / couplingFactor, d * couplingFactor);
    if (pulled != rate()) setRate(pulled);
    emit updated();
  }
  emit updated();
}

void ModeViewFM::setDeviation(double deviationHz) {
  const double d = clampOr(deviationHz, minFrequency, maxFrequency, deviation());
  deviationEdit_->setValue(d);
  const double pulled = std::clamp(rate(), d / couplingFactor, d * couplingFactor);
  if (pulled != rate()) setRate(pulled);
  emit updated();
}

void ModeViewFM::setShape(ModShape shape) {
  shapeCombo_->selectValue(shape);
  emit updated();
}

void ModeViewFM::setShapePrivate(int) { emit updated(); }
