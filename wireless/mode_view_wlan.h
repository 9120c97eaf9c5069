// SPDX-License-Identifier: MIT
// Base of the three WLAN views: the rows they share, their slots and their common preset keys.
#pragma once

#include "modes/mode_widget.h"
#include "wireless/rate_params.h"
#include "wireless/wlan_frame_samples.h"

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
// A mode lays out its form as: leading rows, its rate rows, trailing rows.
class ModeViewWLAN : public ModeWidget {
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

  // All safe on the streaming thread.
  int triggerMode() const;
  bool isSingle() const;
  double baseSampleRate() const;  // "Sample Rate" alone
  double subcarrierSpacing() const;
  int oversample() const;
  // Oversample x sample rate: the rate of the idle count.
  double oversampledRate() const;
  // What the device is given; the oversampled rate unless a mode says otherwise.
  virtual double sampleRate() const;
  bool interleaved() const;
  bool scrambled() const;
  int scramblerInit() const;
  int windowLength() const;
  int dataSource() const;       // PN order, or -1 for the custom pattern
  int dataLength() const;       // bytes
  double idleInterval() const;  // s
  QString customData() const;
  QString modulationText() const;
  QString encodingText() const;

  // The finished samples: the frame at -6 dB RMS and its idle zeros; none when the source has
  // no bit to repeat.
  virtual ComplexVector generateFrame() const = 0;

  // Setters of the controls without their own slot; each emits updated() once.
  void setTriggerMode(int mode);
  void setInterleaved(bool on);
  void setScrambled(bool on);
  void setScramblerInit(int value);
  void setData(int source);  // a source that isn't listed leaves the selection
  // Stored as given here; a mode with a limit clamps.
  virtual void setDataLength(int bytes);
  void setCustomData(const QString& pattern);

  void setDefaults() override;
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
  // `minBytes` and `maxBytes` bound what "Bytes" takes by typing.
  ModeViewWLAN(const QString& name, int modeIndex, const char* presetGroup, int minBytes,
               int maxBytes, QWidget* parent);

  // "Enabled" and "Trigger Mode".
  void addLeadingRows();
  // "Sample Rate" to "Idle Interval".
  void addTrailingRows();

  // The row whose names the two labels show.
  virtual const RateParams& labelRate() const = 0;
  // The mode's own keys and defaults: its rate rows, and those that follow "ScramblerInit".
  virtual void saveRateKeys(QSettings* settings) const = 0;
  virtual void loadRateKeys(QSettings* settings) = 0;
  virtual void setRateDefaults() = 0;
  virtual void saveSignalKeys(QSettings*) const {}
  virtual void loadSignalKeys(QSettings*) {}
  virtual void setSignalDefaults() {}

  // Copies the rows that every mode has into a build's settings, the source bits included.
  template <class FrameParams>
  void fillShared(WlanSettings<FrameParams>& s) const;
  BitVector sourceBits() const;

  // Runs the pattern dialog; tests answer it without a modal loop.
  virtual int runDialog(QDialog& dialog);

  // Selects `value` in a combo; when that moves nothing, updated() is emitted here instead,
  // so each call restarts the output once.
  void selectOrReport(MyComboBox* combo, int value);

  MyComboBox* triggerCombo;
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

private:
  void connectControls();

  const char* presetGroup;
  // The check boxes' states, for the streaming thread.
  std::atomic<bool> interleaved_{true};
  std::atomic<bool> scrambled_{true};
  mutable std::mutex customLock;
  QString customData_ = "0000";
};

template <class FrameParams>
void ModeViewWLAN::fillShared(WlanSettings<FrameParams>& s) const {
  s.frame.interleaved = interleaved();
  s.frame.scrambled = scrambled();
  s.frame.scramblerInit = static_cast<uint8_t>(scramblerInit() & 0xff);
  s.frame.windowLength = windowLength();
  s.sourceBits = sourceBits();
  s.bytes = dataLength();
  s.idleSeconds = idleInterval();
  s.sampleRate = oversampledRate();
}
