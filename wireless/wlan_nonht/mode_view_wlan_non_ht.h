// SPDX-License-Identifier: MIT
// The IEEE 802.11a view (mode 11): rate, OFDM numerology, coding switches and the PSDU source.
#pragma once

#include "modes/mode_widget.h"
#include "wireless/wlan_nonht/non_ht_frame_builder.h"

#include <QString>

#include <atomic>
#include <mutex>

class FrequencyEdit;
class IntLineEdit;
class MyComboBox;
class QCheckBox;
class QDialog;
class QLabel;
class TimeEdit;

// The controls are the store; the custom bit pattern sits beside them under a lock, since the
// dialog may replace it while the streaming thread copies it. Slots clamp silently.
class ModeViewWLANNonHT : public ModeWidget {
  Q_OBJECT

public:
  static constexpr double minSampleRate = 5e6;
  static constexpr double maxSampleRate = 2.5e7;
  static constexpr double minSubcarrierSpacing = 78125.0;
  static constexpr double maxSubcarrierSpacing = 390625.0;
  static constexpr int fftSize = 64;  // sample rate = spacing x FFT size
  static constexpr int maxWindowLength = 16;
  static constexpr double maxIdleInterval = 0.1;  // s
  static constexpr int pnSeed = 23;

  explicit ModeViewWLANNonHT(QWidget* parent = nullptr);

  // All safe on the streaming thread.
  int triggerMode() const;
  bool isSingle() const;
  int rateCode() const;
  double baseSampleRate() const;  // "Sample Rate" alone
  double subcarrierSpacing() const;
  int oversample() const;
  // Oversample x sample rate: what the device is given.
  double sampleRate() const;
  bool interleaved() const;
  bool scrambled() const;
  int scramblerInit() const;
  int windowLength() const;
  int dataSource() const;  // PN order, or -1 for the custom pattern
  int dataLength() const;  // bytes
  double idleInterval() const;  // s
  QString customData() const;
  QString modulationText() const;
  QString encodingText() const;

  // What the build takes, the source bits included.
  NonHtSettings settings() const;
  // The finished samples: the frame at -6 dB RMS and its idle zeros; none when the source has
  // no bit to repeat.
  ComplexVector generateFrame() const;

  // Setters of the controls without their own slot; each emits updated() once.
  void setTriggerMode(int mode);
  void setRate(int code);  // a code that isn't listed leaves the rate
  void setInterleaved(bool on);
  void setScrambled(bool on);
  void setScramblerInit(int value);
  void setData(int source);  // likewise for a source that isn't listed
  void setDataLength(int bytes);
  void setCustomData(const QString& pattern);

  void setDefaults() override;
  // Group "WLAN_NonHT".
  void saveSettings(QSettings* settings) override;
  void loadSettings(QSettings* settings) override;

public slots:
  void setSampleRate(double rate);
  void setSubcarrierSpacing(double spacing);
  void setWindowLength(int length);
  void setIdleInterval(double seconds);
  void updateStrings();
  void defineCustomSequence();

protected:
  // Runs the pattern dialog; tests answer it without a modal loop.
  virtual int runDialog(QDialog& dialog);

private:
  void addControls();
  void connectControls();

  MyComboBox* triggerCombo;
  MyComboBox* rateCombo;
  QLabel* modulationLabel;
  QLabel* encodingLabel;
  FrequencyEdit* sampleRateEdit;
  FrequencyEdit* spacingEdit;
  IntLineEdit* oversampleEdit;
  QCheckBox* interleaveCheck;
  QCheckBox* scrambleCheck;
  IntLineEdit* scramblerInitEdit;
  IntLineEdit* windowLengthEdit;
  MyComboBox* dataCombo;
  IntLineEdit* bytesEdit;
  QLabel* durationLabel;
  TimeEdit* idleEdit;

  // The check boxes' states, for the streaming thread.
  std::atomic<bool> interleaved_{true};
  std::atomic<bool> scrambled_{true};
  mutable std::mutex customLock;
  QString customData_ = "0000";
};
