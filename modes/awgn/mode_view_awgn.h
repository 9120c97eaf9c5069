// SPDX-License-Identifier: MIT
// The AWGN view (mode 7): bandwidth, length and seed of the noise record.
#pragma once

#include "modes/awgn/awgn_builder.h"
#include "modes/mode_widget.h"

class FrequencyEdit;
class IntLineEdit;
class TimeEdit;

// The controls are the store: each slot clamps, writes the control and emits updated().
class ModeViewAWGN : public ModeWidget {
  Q_OBJECT

public:
  static constexpr double minBandwidth = 5e4;   // Hz
  static constexpr double maxBandwidth = 4e7;   // Hz
  static constexpr double minLength = 1e-4;     // s
  static constexpr double maxLength = 0.2;      // s

  explicit ModeViewAWGN(QWidget* parent = nullptr);

  double bandwidth() const;  // Hz
  double length() const;     // s
  int seed() const;
  AwgnSettings settings() const { return {bandwidth(), length(), seed()}; }

  FrequencyEdit* bandwidthEdit() const { return bandwidthEdit_; }
  TimeEdit* lengthEdit() const { return lengthEdit_; }
  IntLineEdit* seedEdit() const { return seedEdit_; }

  // Bandwidth 4e7 Hz, length 0.01 s, seed 23.
  void setDefaults() override;
  // Group "AWGN": "Bandwidth", "Length", "Seed".
  void saveSettings(QSettings* settings) override;
  void loadSettings(QSettings* settings) override;

public slots:
  void setBandwidth(double newBandwidth);
  void setLength(double newLength);
  // A negative seed is taken by its magnitude.
  void setSeed(int newSeed);

private:
  FrequencyEdit* bandwidthEdit_;
  TimeEdit* lengthEdit_;
  IntLineEdit* seedEdit_;
};
