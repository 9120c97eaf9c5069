// SPDX-License-Identifier: MIT
// View of the step sweep: start and stop of frequency and level, points and dwell.
#include "modes/step_sweep/mode_view_step_sweep.h"

#include "widgets/double_edit.h"
#include "widgets/frequency_edit.h"
#include "widgets/int_line_edit.h"
#include "widgets/my_combo_box.h"
#include "widgets/my_form_layout.h"
#include "widgets/time_edit.h"

#include <QCheckBox>
#include <QSettings>

#include <algorithm>

ModeViewStepSweep::ModeViewStepSweep(QWidget* parent)
    : ModeWidget("Step Sweep", 5, parent),
      triggerCombo(new MyComboBox(this)),
      sweepTypeCombo(new MyComboBox(this)),
      startFreqEdit(new FrequencyEdit(1e6, this)),
      stopFreqEdit(new FrequencyEdit(1e9, this)),
      pointsEdit(new IntLineEdit(this)),
      startAmplEdit(new DoubleEdit(this)),
      stopAmplEdit(new DoubleEdit(this)),
      dwellEdit(new TimeEdit(this)) {
  for (int value : {TriggerContinuous, TriggerSingle})
    triggerCombo->addItem(triggerTypeTexts[value], value);
  for (int value : {StepSweepFreq, StepSweepFreqAmplitude})
    sweepTypeCombo->addItem(stepSweepTypeTexts[value], value);
  pointsEdit->setRange(minPoints, maxPoints);
  pointsEdit->setStep(true, 1);

  formLayout->addRow("Enabled", enabledCheck());
  formLayout->addRow("Trigger Mode", triggerCombo);
  formLayout->addRow("Sweep Type", sweepTypeCombo);
  formLayout->addRow("Start Freq", startFreqEdit);
  formLayout->addRow("Stop Freq", stopFreqEdit);
  formLayout->addRow("Points", pointsEdit);
  formLayout->addRow("Start Level (dBm)", startAmplEdit);
  formLayout->addRow("Stop Level (dBm)", stopAmplEdit);
  formLayout->addRow("Dwell Time", dwellEdit);

  connect(triggerCombo, qOverload<int>(&QComboBox::currentIndexChanged), this,
          &ModeViewStepSweep::triggerIndexChanged);
  connect(sweepTypeCombo, qOverload<int>(&QComboBox::currentIndexChanged), this,
          &ModeViewStepSweep::sweepTypeChanged);
  connect(startFreqEdit, &FrequencyEdit::valueChanged, this, &ModeViewStepSweep::setStartFreq);
  connect(stopFreqEdit, &FrequencyEdit::valueChanged, this, &ModeViewStepSweep::setStopFreq);
  connect(pointsEdit, &IntLineEdit::valueChanged, this, &ModeViewStepSweep::setPoints);
  connect(startAmplEdit, &DoubleEdit::editUpdated, this, &ModeViewStepSweep::setStartAmpl);
  connect(stopAmplEdit, &DoubleEdit::editUpdated, this, &ModeViewStepSweep::setStopAmpl);
  connect(dwellEdit, &TimeEdit::valueChanged, this, &ModeViewStepSweep::setDwellTime);
}

void ModeViewStepSweep::setDefaults() {
  setTriggerType(TriggerContinuous);
  setSweepType(StepSweepFreq);
  setStartFreq(1e9);
  setStopFreq(2e9);
  setPoints(201);
  setStartAmpl(-20.0);
  setStopAmpl(-20.0);
  setDwellTime(0.001);
}

void ModeViewStepSweep::saveSettings(QSettings* settings) {
  settings->beginGroup("StepSweep");
  settings->setValue("TriggerMode", static_cast<int>(triggerType()));
  settings->setValue("SweepType", static_cast<int>(sweepType()));
  settings->setValue("StartFreq", startFreq());
  settings->setValue("StopFreq", stopFreq());
  settings->setValue("Points", points());
  settings->setValue("StartAmpl", startAmpl());
  settings->setValue("StopAmpl", stopAmpl());
  settings->setValue("DwellTime", dwellTime());
  settings->endGroup();
}

void ModeViewStepSweep::loadSettings(QSettings* settings) {
  settings->beginGroup("StepSweep");
  setTriggerType(static_cast<TriggerType>(
      settings->value("TriggerMode", static_cast<int>(triggerType())).toInt()));
  setSweepType(static_cast<StepSweepType>(
      settings->value("SweepType", static_cast<int>(sweepType())).toInt()));
  setStartFreq(settings->value("StartFreq", startFreq()).toDouble());
  setStopFreq(settings->value("StopFreq", stopFreq()).toDouble());
  setPoints(settings->value("Points", points()).toInt());
  setStartAmpl(settings->value("StartAmpl", startAmpl()).toDouble());
  setStopAmpl(settings->value("StopAmpl", stopAmpl()).toDouble());
  setDwellTime(settings->value("DwellTime", dwellTime()).toDouble());
  settings->endGroup();
}

StepSweepSettings ModeViewStepSweep::settings() const {
  StepSweepSettings s;
  s.startFreqHz = startFreq();
  s.stopFreqHz = stopFreq();
  s.points = points();
  s.startLevelDbm = startAmpl();
  s.stopLevelDbm = stopAmpl();
  s.dwellSeconds = dwellTime();
  s.trigger = triggerType();
  s.type = sweepType();
  return s;
}

double ModeViewStepSweep::startFreq() const { return startFreqEdit->value(); }
double ModeViewStepSweep::stopFreq() const { return stopFreqEdit->value(); }
int ModeViewStepSweep::points() const { return pointsEdit->value(); }
double ModeViewStepSweep::startAmpl() const { return startAmplEdit->value(); }
double ModeViewStepSweep::stopAmpl() const { return stopAmplEdit->value(); }
double ModeViewStepSweep::dwellTime() const { return dwellEdit->value(); }

void ModeViewStepSweep::setTriggerType(TriggerType newType) {
  if (!triggerCombo->selectValue(newType)) emit updated();
}

void ModeViewStepSweep::setSweepType(StepSweepType newType) {
  if (!sweepTypeCombo->selectValue(newType)) emit updated();
}

void ModeViewStepSweep::setStartFreq(double newStartFreq) {
  startFreqEdit->setValue(std::clamp(newStartFreq, minFreq, maxFreq));
  emit updated();
}

void ModeViewStepSweep::setStopFreq(double newStopFreq) {
  stopFreqEdit->setValue(std::clamp(newStopFreq, minFreq, maxFreq));
  emit updated();
}

void ModeViewStepSweep::setPoints(int newPoints) {
  pointsEdit->setValue(std::clamp(newPoints, minPoints, maxPoints));
  emit updated();
}

void ModeViewStepSweep::setStartAmpl(double newStartAmpl) {
  startAmplEdit->setValue(newStartAmpl);
  emit updated();
}

void ModeViewStepSweep::setStopAmpl(double newStopAmpl) {
  stopAmplEdit->setValue(newStopAmpl);
  emit updated();
}

void ModeViewStepSweep::setDwellTime(double newDwellTime) {
  dwellEdit->setValue(std::clamp(newDwellTime, minDwell, maxDwell));
  emit updated();
}

void ModeViewStepSweep::triggerIndexChanged(int index) { emit updated(); }

void ModeViewStepSweep::sweepTypeChanged(int index) { emit updated(); }
