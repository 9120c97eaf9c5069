// SPDX-License-Identifier: MIT
// The FM view (mode 2): rate, deviation and shape, kept within a factor 1000.
#pragma once

#include "modes/am_fm/am_fm_builder.h"
#include "modes/mode_types.h"
#include "modes/mode_widget.h"
#include "widgets/my_combo_box.h"

class FrequencyEdit;

// Rate and deviation stay within a factor of 1000 of each other: setRate moves the deviation,
// setDeviation moves the rate. The generator reads settings() on the streaming thread.
class ModeViewFM : public ModeWidget {
  Q_OBJECT

public:
  static constexpr double minFrequency = 1.0;  // Hz, rate and deviation
  static constexpr double maxFrequency = 1e7;  // Hz, rate and deviation
  static constexpr double couplingFactor = 1000.0;

  // Ends by calling setDefaults().
  explicit ModeViewFM(QWidget* parent = nullptr);

  double rate() const;       // Hz
  double deviation() const;  // Hz
  int shape() const { return shapeCombo_->currentValue(); }
  FmSettings settings() const { return {rate(), deviation(), shape()}; }

  FrequencyEdit* rateEdit() const { return rateEdit_; }
  FrequencyEdit* deviationEdit() const { return deviationEdit_; }
  MyComboBox* shapeCombo() const { return shapeCombo_; }

  // Rate 1000 through setRate, deviation 1000 directly, the rate pulled into the deviation's
  // window, Sine.
  void setDefaults() override;
  // Group "FM": "Rate", "Deviation", "Shape".
  void saveSettings(QSettings* settings) override;
  void loadSettings(QSettings* settings) override;

public slots:
  void setRate(double rateHz);
  void setDeviation(double deviationHz);
  void setShape(ModShape shape);
  void setShapePrivate(int index);

private:
  FrequencyEdit* rateEdit_;
  FrequencyEdit* deviationEdit_;
  MyComboBox* shapeCombo_;
};
