// SPDX-License-Identifier: MIT
// View of the ramp sweep: span, sweep time and period, the period never below the sweep time.
#pragma once

#include "modes/mode_widget.h"
#include "widgets/my_combo_box.h"
#include "modes/ramp_sweep/ramp_sweep_builder.h"

class FrequencyEdit;
class TimeEdit;

class ModeViewRampSweep : public ModeWidget {
  Q_OBJECT

public:
  explicit ModeViewRampSweep(QWidget* parent = nullptr);

  static constexpr double minSpan = 1.0;  // Hz
  static constexpr double maxSpan = 4e7;
  static constexpr double minSweepTime = 1e-6;  // s
  static constexpr double maxSweepTime = 1.0;

  void setDefaults() override;
  void saveSettings(QSettings* settings) override;
  void loadSettings(QSettings* settings) override;

  // Safe on the streaming thread; read once at the start of a run.
  RampSweepSettings settings() const;
  TriggerType triggerType() const { return static_cast<TriggerType>(triggerCombo->currentValue()); }
  double span() const;
  double sweepTime() const;
  double sweepPeriod() const;

public slots:
  // Selects the item of `type` (none: no change) and emits updated().
  void setTriggerType(TriggerType type);
  void setSpan(double newSpan);
  // Clamps; a sweep time above the period raises the period to it.
  void setSweepTime(double newTime);
  // Clamps to the current sweep time to 1 s.
  void setSweepPeriod(double newPeriod);

private:
  MyComboBox* triggerCombo;
  FrequencyEdit* spanEdit;
  TimeEdit* sweepTimeEdit;
  TimeEdit* periodEdit;
};
