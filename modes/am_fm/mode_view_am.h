// SPDX-License-Identifier: MIT
// The AM view (mode 1): rate, depth and shape of the amplitude modulation.
#pragma once

#include "modes/am_fm/am_fm_builder.h"
#include "modes/mode_types.h"
#include "modes/mode_widget.h"
#include "widgets/my_combo_box.h"

class DoubleEdit;
class FrequencyEdit;

// The controls are the store: each slot clamps, writes the control and emits updated().
// The generator reads settings() on the streaming thread without a lock.
class ModeViewAM : public ModeWidget {
  Q_OBJECT

public:
  static constexpr double minRate = 1.0;     // Hz
  static constexpr double maxRate = 1e7;     // Hz
  static constexpr double minDepth = 0.0;    // %
  static constexpr double maxDepth = 100.0;  // %

  explicit ModeViewAM(QWidget* parent = nullptr);

  double rate() const;   // Hz
  double depth() const;  // %
  // The selected item's ModShape; safe on the streaming thread.
  int shape() const { return shapeCombo_->currentValue(); }
  AmSettings settings() const { return {rate(), depth(), shape()}; }

  FrequencyEdit* rateEdit() const { return rateEdit_; }
  DoubleEdit* depthEdit() const { return depthEdit_; }
  MyComboBox* shapeCombo() const { return shapeCombo_; }

  // Rate 1000 Hz, depth 50 %, Sine. The constructor does not call it.
  void setDefaults() override;
  // Group "AM": "Rate", "Depth", "Shape".
  void saveSettings(QSettings* settings) override;
  void loadSettings(QSettings* settings) override;

public slots:
  void setRate(double rateHz);
  void setDepth(double depthPercent);
  // Selects the item of `shape` (none: no change) and emits updated().
  void setShape(ModShape shape);
  // The user picked an item: only emits updated().
  void setShapePrivate(int index);

private:
  FrequencyEdit* rateEdit_;
  DoubleEdit* depthEdit_;
  MyComboBox* shapeCombo_;
};
