// SPDX-License-Identifier: MIT
// View of the pulse mode: trigger, width and period, the width never above the period.
#pragma once

#include "modes/mode_widget.h"
#include "widgets/my_combo_box.h"
#include "modes/pulse/pulse_builder.h"

class QLabel;
class TimeEdit;

class ModeViewPulse : public ModeWidget {
  Q_OBJECT

public:
  explicit ModeViewPulse(QWidget* parent = nullptr);

  static constexpr double minTime = 1e-7;  // s, for width and period
  static constexpr double maxTime = 1.0;

  // Puts the controls to their defaults without emitting updated().
  void setDefaults() override;
  void saveSettings(QSettings* settings) override;
  void loadSettings(QSettings* settings) override;

  // Safe on the streaming thread; read once at the start of a run.
  PulseSettings settings() const;
  TriggerType triggerType() const { return static_cast<TriggerType>(triggerCombo->currentValue()); }
  double pulseWidth() const;
  double pulsePeriod() const;
  QString dutyCycleText() const;

public slots:
  // Selects the item of `type` (none: no change) and emits updated().
  void setTriggerType(TriggerType type);
  // Clamps; a width above the period drags the period up with it.
  void setPulseWidth(double newWidth);
  // Clamps; a period below the width drags the width down with it.
  void setPulsePeriod(double newPeriod);
  void triggerIndexChanged(int index);

private:
  void refreshDutyCycle();

  MyComboBox* triggerCombo;
  TimeEdit* widthEdit;
  TimeEdit* periodEdit;
  QLabel* dutyLabel;
};
