// SPDX-License-Identifier: MIT
// The "Signal Impairments" panel: settings that act on the output whatever the mode.
#pragma once

#include "core/impairment_noise.h"
#include "core/impairment_stage.h"

#include <QWidget>

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <utility>
#include <vector>

class DoubleEdit;
class FrequencyEdit;
class IntLineEdit;
class QCheckBox;
class QPushButton;
class QSettings;

// Both a view and a stage of the signal path: the retune asks it for corrections, the
// generators that honour it filter their waveform and build the noise through it, and every
// chunk passes through process(). The controls are the store; the streaming thread reads the
// edits' atomic values and the check boxes' mirrors below, and the GUI thread changes them only
// in ways that end in a restart.
class ImpairmentWidget : public QWidget, public ImpairmentStage {
  Q_OBJECT
public:
  static constexpr double maxTimebaseAdjust = 2.0;      // ppm
  static constexpr int maxIQOffset = 1024;              // device units
  static constexpr double maxSampleRateError = 2000.0;  // ppm
  static constexpr double maxSnr = 100.0;               // dB
  static constexpr int passThroughTaps = 15;
  // Taps a preset may give the channel filter; the editor accepts at most 256.
  static constexpr int maxChannelFilterTaps = 16384;

  // Runs the channel filter editor on `taps`; true, with `taps` replaced, when it was accepted.
  using FilterEditor = std::function<bool(QWidget* parent, std::vector<Sample>& taps)>;

  explicit ImpairmentWidget(QWidget* parent = nullptr);

  // Read by the retune, the restart and the remote rows.
  double frequencyOffset() const override;
  double sampleRateFactor() const override;
  double sampleRateError() const;  // ppm
  bool lowSpurMode() const override { return lowSpur.load(std::memory_order_relaxed); }
  std::pair<int16_t, int16_t> iqOffset() const;
  double timebaseOffset() const;  // ppm
  bool awgnEnabled() const { return awgnOn.load(std::memory_order_relaxed); }
  double awgnSnr() const;        // dB
  double awgnBandwidth() const;  // Hz
  bool channelFilterEnabled() const { return channelFilterOn.load(std::memory_order_relaxed); }
  std::vector<Sample> channelFilter() const;

  // The pass-through filter and the defaults of every control but "Low Spur Mode".
  void setDefaults();
  // Group "Impairments" of a preset, then the array "ChannelFilter".
  void saveSettings(QSettings* settings);
  void loadSettings(QSettings* settings);

  // Stage operations, on the streaming thread (see ImpairmentStage).
  void invalidateNoise() { noiseStage.noiseValid = false; }
  void applyChannelFilter(Sample* samples, int length) override;
  void prepareNoise(double signalPowerDb, double sampleRateHz) override;
  void process(const Sample* in, Sample* out, int count) override;
  const ImpairmentNoise& noiseRecord() const { return noiseStage; }

  // Tests replace the modal editor of "Define Channel Filter".
  void setFilterEditor(FilterEditor editor) { filterEditor = std::move(editor); }

  DoubleEdit* timebaseEdit;
  FrequencyEdit* frequencyOffsetEdit;
  QCheckBox* lowSpurCheck;
  IntLineEdit* iOffsetEdit;
  IntLineEdit* qOffsetEdit;
  DoubleEdit* sampleRateErrorEdit;
  QCheckBox* awgnCheck;
  DoubleEdit* awgnSnrEdit;
  FrequencyEdit* awgnBandwidthEdit;
  QCheckBox* channelFilterCheck;
  QPushButton* defineFilterButton;

signals:
  void impairmentsChanged();
  // Emitted on the streaming thread; queued to forceAWGNBandwidthSlot.
  void forceAWGNBandwidthSignal(double bw);

public slots:
  void dockLocationChanged(Qt::DockWidgetArea area) {}
  void setTimebaseAdjust(double ppm);
  void setFrequencyOffset(double offsetHz);
  void setLowSpurMode(bool enabled);
  void setIOffset(int offset);
  void setQOffset(int offset);
  void setSampleRateError(double ppm);
  void setAWGNEnabled(bool enabled);
  void setAWGNSNR(double snrDb);
  // The edit has stored the value already: only announces the change.
  void setAWGNBW(double bandwidthHz);
  void setChannelFilterEnabled(bool enabled);
  // Opens the editor on a copy of the taps; a restart follows whether it was accepted or not.
  void defineChannelFilter();
  // Shows the bandwidth the noise really has; no restart.
  void forceAWGNBandwidthSlot(double bw);

private:
  void buildForm();
  void connectControls();
  void setChannelFilterTaps(std::vector<Sample> taps);

  // Mirrors of the check boxes for the streaming thread.
  std::atomic<bool> lowSpur{true};
  std::atomic<bool> awgnOn{false};
  std::atomic<bool> channelFilterOn{false};
  ImpairmentNoise noiseStage;
  // Replaced on the GUI thread while a build may be reading it.
  mutable std::mutex channelFilterLock;
  std::vector<Sample> channelFilterTaps;
  FilterEditor filterEditor;
};

// The modal "Custom Filter" editor of complex taps; the default FilterEditor.
bool runChannelFilterEditor(QWidget* parent, std::vector<Sample>& taps);
