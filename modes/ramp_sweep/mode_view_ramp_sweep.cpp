// SPDX-License-Identifier: MIT
// View of the ramp sweep: span, sweep time and period, the period never below the sweep time.
#include "modes/ramp_sweep/mode_view_ramp_sweep.h"

#include "widgets/frequency_edit.h"
#include "widgets/my_combo_box.h"
#include "widgets/my_form_layout.h"
#include "widgets/time_edit.h"

#include <QCheckBox>
#include <QSettings>

#include <algorithm>

ModeViewRampSweep::ModeViewRampSweep(QWidget* parent)
    : ModeWidget("Ramp Sweep", 6, parent),
      triggerCombo(new MyComboBox(this)),
      spanEdit(new FrequencyEdit(2e7, this)),
      sweepTimeEdit(new TimeEdit(this)),
      periodEdit(new TimeEdit(this)) {
  for (int value : {TriggerContinuous, TriggerSingle})
    triggerCombo->addItem(triggerTypeTexts[value], value);

  formLayout->addRow("Enabled", enabledCheck());
  formLayout->addRow("Trigger Mode", triggerCombo);
  formLayout->addRow("Span", spanEdit);
  formLayout->addRow("Sweep Time", sweepTimeEdit);
  formLayout->addRow("Period", periodEdit);

  // The box has no slot of its own: a change is reported as it is.
  connect(triggerCombo, qOverload<int>(&QComboBox::currentIndexChanged), this,
          &ModeWidget::updated);
  connect(spanEdit, &FrequencyEdit::valueChanged, this, &ModeViewRampSweep::setSpan);
  connect(sweepTimeEdit, &TimeEdit::valueChanged, this, &ModeViewRampSweep::setSweepTime);
  connect(periodEdit, &TimeEdit::valueChanged, this, &ModeViewRampSweep::setSweepPeriod);
}

void ModeViewRampSweep::setDefaults() {
  setTriggerType(TriggerContinuous);
  setSpan(2e7);
  setSweepTime(0.001);
  setSweepPeriod(0.001);
}

void ModeViewRampSweep::saveSettings(QSettings* settings) {
  settings->beginGroup("RampSweep");
  settings->setValue("TriggerMode", static_cast<int>(triggerType()));
  settings->setValue("Span", span());
  settings->setValue("SweepTime", sweepTime());
  settings->setValue("Period", sweepPeriod());
  settings->endGroup();
}

void ModeViewRampSweep::loadSettings(QSettings* settings) {
  settings->beginGroup("RampSweep");
  setTriggerType(static_cast<TriggerType>(
      settings->value("TriggerMode", static_cast<int>(triggerType())).toInt()));
  setSpan(settings->value("Span", span()).toDouble());
  setSweepTime(settings->value("SweepTime", sweepTime()).toDouble());
  setSweepPeriod(settings->value("Period", sweepPeriod()).toDouble());
  settings->endGroup();
}

RampSweepSettings ModeViewRampSweep::settings() const {
  RampSweepSettings s;
  s.spanHz = span();
  s.sweepTimeSeconds = sweepTime();
  s.periodSeconds = sweepPeriod();
  s.trigger = triggerType();
  return s;
}

double ModeViewRampSweep::span() const { return spanEdit->value(); }
double ModeViewRampSweep::sweepTime() const { return sweepTimeEdit->value(); }
double ModeViewRampSweep::sweepPeriod() const { return periodEdit->value(); }

void ModeViewRampSweep::setTriggerType(TriggerType type) {
  // A new selection reports itself through the box's signal; otherwise report here.
  if (!triggerCombo->selectValue(type)) emit updated();
}

void ModeViewRampSweep::setSpan(double newSpan) {
  spanEdit->setValue(std::clamp(newSpan, minSpan, maxSpan));
  emit updated();
}

void ModeViewRampSweep::setSweepTime(double newTime) {
  const double time = std::clamp(newTime, minSweepTime, maxSweepTime);
  sweepTimeEdit->setValue(time);
  if (time > sweepPeriod()) periodEdit->setValue(time);
  emit updated();
}

void ModeViewRampSweep::setSweepPeriod(double newPeriod) {
  periodEdit->setValue(std::clamp(newPeriod, sweepTime(), maxSweepTime));
  emit updated();
}
