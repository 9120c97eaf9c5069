// SPDX-License-Identifier: MIT
// The AM view (mode 1): rate, depth and shape of the amplitude modulation.
#include "modes/am_fm/mode_view_am.h"

#include "modes/mode_types.h"
#include "widgets/double_edit.h"
#include "widgets/frequency_edit.h"
#include "widgets/my_combo_box.h"
#include "widgets/my_form_layout.h"

#include <QCheckBox>
#include <QSettings>

#include <algorithm>
#include <cmath>

ModeViewAM::ModeViewAM(QWidget* parent)
    : ModeWidget("AM", 1, parent),
      rateEdit_(new FrequencyEdit(1000.0, this)),
      depthEdit_(new DoubleEdit(minDepth, maxDepth, 2, 10.0, this)),
      shapeCombo_(new MyComboBox(this)) {
  for (int value = ModShapeSine; value <= ModShapeRamp; ++value)
    shapeCombo_->addItem(modShapeTexts[value], value);

  formLayout->addRow("Enabled", enabledCheck());
  formLayout->addRow("Rate", rateEdit_);
  formLayout->addRow("Depth(%)", depthEdit_);
  formLayout->addRow("Shape", shapeCombo_);

  connect(rateEdit_, &FrequencyEdit::valueChanged, this, &ModeViewAM::setRate);
  connect(depthEdit_, &DoubleEdit::editUpdated, this, &ModeViewAM::setDepth);
  connect(shapeCombo_, QOverload<int>::of(&QComboBox::activated), this,
          &ModeViewAM::setShapePrivate);
}

double ModeViewAM::rate() const { return rateEdit_->value(); }

double ModeViewAM::depth() const { return depthEdit_->value(); }

void ModeViewAM::setDefaults() {
  setRate(1000.0);
  setDepth(50.0);
  setShape(ModShapeSine);
}

void ModeViewAM::saveSettings(QSettings* settings) {
  settings->beginGroup("AM");
  settings->setValue("Rate", rate());
  settings->setValue("Depth", depth());
  settings->setValue("Shape", shape());
  settings->endGroup();
}

void ModeViewAM::loadSettings(QSettings* settings) {
  settings->beginGroup("AM");
  setRate(settings->value("Rate", rate()).toDouble());
  setDepth(settings->value("Depth", depth()).toDouble());
  // An unknown value leaves the combo box as it is.
  shapeCombo_->selectValue(settings->value("Shape", shape()).toInt());
  emit updated();
  settings->endGroup();
}

void ModeViewAM::setRate(double rateHz) {
  rateEdit_->setValue(clampOr(rateHz, minRate, maxRate, rate()));
  emit updated();
}

void ModeViewAM::setDepth(double depthPercent) {
  depthEdit_->setValue(clampOr(depthPercent, minDepth, maxDepth, depth()));
  emit updated();
}

void ModeViewAM::setShape(ModShape shape) {
  shapeCombo_->selectValue(shape);
  emit updated();
}

void ModeViewAM::setShapePrivate(int) { emit updated(); }
