// SPDX-License-Identifier: MIT
// View of the pulse mode: trigger, width and period, the width never above the period.
#include "modes/pulse/mode_view_pulse.h"

#include "widgets/my_combo_box.h"
#include "widgets/my_form_layout.h"
#include "widgets/time_edit.h"

#include <QCheckBox>
#include <QLabel>
#include <QSettings>
#include <QSignalBlocker>

#include <algorithm>

ModeViewPulse::ModeViewPulse(QWidget* parent)
    : ModeWidget("Pulse", 3, parent),
      triggerCombo(new MyComboBox(this)),
      widthEdit(new TimeEdit(this)),
      periodEdit(new TimeEdit(this)),
      dutyLabel(new QLabel(this)) {
  for (int type : {TriggerContinuous, TriggerSingle})
    triggerCombo->addItem(triggerTypeTexts[type], type);

  formLayout->addRow("Enabled", enabledCheck());
  formLayout->addRow("Trigger Mode", triggerCombo);
  formLayout->addRow("Width", widthEdit);
  formLayout->addRow("Period", periodEdit);
  formLayout->addRow("Duty Cycle", dutyLabel);

  connect(triggerCombo, qOverload<int>(&QComboBox::currentIndexChanged), this,
          &ModeViewPulse::triggerIndexChanged);
  connect(widthEdit, &TimeEdit::valueChanged, this, &ModeViewPulse::setPulseWidth);
  connect(periodEdit, &TimeEdit::valueChanged, this, &ModeViewPulse::setPulsePeriod);
  refreshDutyCycle();
}

void ModeViewPulse::setDefaults() {
  const QSignalBlocker quiet(this);
  setTriggerType(TriggerContinuous);
  setPulseWidth(0.001);
  setPulsePeriod(0.002);
}

void ModeViewPulse::saveSettings(QSettings* settings) {
  settings->beginGroup("Pulse");
  settings->setValue("Trigger", static_cast<int>(triggerType()));
  settings->setValue("Width", pulseWidth());
  settings->setValue("Period", pulsePeriod());
  settings->endGroup();
}

// Width first: a stored width above the current period raises it, and the stored period then
// lowers a width above it.
void ModeViewPulse::loadSettings(QSettings* settings) {
  settings->beginGroup("Pulse");
  setTriggerType(static_cast<TriggerType>(
      settings->value("Trigger", static_cast<int>(triggerType())).toInt()));
  setPulseWidth(settings->value("Width", pulseWidth()).toDouble());
  setPulsePeriod(settings->value("Period", pulsePeriod()).toDouble());
  settings->endGroup();
}

PulseSettings ModeViewPulse::settings() const {
  PulseSettings s;
  s.widthSeconds = pulseWidth();
  s.periodSeconds = pulsePeriod();
  s.trigger = triggerType();
  return s;
}

double ModeViewPulse::pulseWidth() const { return widthEdit->value(); }
double ModeViewPulse::pulsePeriod() const { return periodEdit->value(); }
QString ModeViewPulse::dutyCycleText() const { return dutyLabel->text(); }

void ModeViewPulse::setTriggerType(TriggerType type) {
  // A new selection reports itself through the box's signal; otherwise report here.
  if (!triggerCombo->selectValue(type)) emit updated();
}

void ModeViewPulse::setPulseWidth(double newWidth) {
  const double width = std::clamp(newWidth, minTime, maxTime);
  widthEdit->setValue(width);
  if (width > pulsePeriod()) periodEdit->setValue(width);
  refreshDutyCycle();
  emit updated();
}

void ModeViewPulse::setPulsePeriod(double newPeriod) {
  const double period = std::clamp(newPeriod, minTime, maxTime);
  periodEdit->setValue(period);
  if (pulseWidth() > period) setPulseWidth(period);
  refreshDutyCycle();
  emit updated();
}

void ModeViewPulse::triggerIndexChanged(int index) { emit updated(); }

void ModeViewPulse::refreshDutyCycle() {
  dutyLabel->setText(QString::asprintf("%.3f %%", pulseWidth() / pulsePeriod() * 100.0));
}
