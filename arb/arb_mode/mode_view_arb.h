// SPDX-License-Identifier: MIT
// The arbitrary waveform view (mode 13): a waveform held in memory, its play range and scale.
#pragma once

#include "arb/arb_builder.h"
#include "arb/arb_sequence.h"
#include "modes/mode_widget.h"

#include <QString>

#include <memory>
#include <mutex>
#include <vector>

class DoubleEdit;
class IQFileReader;
class FrequencyEdit;
class IntLineEdit;
class MyComboBox;
class QCheckBox;
class QLabel;

// What the generator plays, copied from the view at its start.
struct ArbInfo {
  bool loaded = false;
  QString name;  // file name without directory, "Custom" for samples sent by remote command
  double sampleRate = 5e7;
  int fileLength = 0;  // samples in memory, or in the sequence
  int period = 0;
  int sampleOffset = 0;
  int samplesToUse = 0;
  // Shared, never changed once loaded: a copy of the info costs no copy of the samples.
  std::shared_ptr<const std::vector<Sample>> samples;
  // Empty unless a sequence is loaded; then it plays instead of the samples.
  std::shared_ptr<const ArbSequence> sequence;
  QString parseError;  // why a CSV load stopped early; shown nowhere
};

// The waveform and its range sit under a lock: a load may replace them while a generator
// still copies them. Setters clamp, refresh the labels and emit updated().
class ModeViewArb : public ModeWidget {
  Q_OBJECT

public:
  static constexpr double minSampleRate = 12500.0;
  static constexpr double maxSampleRate = 54e6;
  static constexpr double minReferenceScale = 0.01;  // %
  static constexpr double maxReferenceScale = 1e6;
  static constexpr int maxPeriod = 100000000;

  explicit ModeViewArb(QWidget* parent = nullptr);

  // Safe on the streaming thread.
  ArbInfo getArbInfo() const;
  int triggerMode() const;
  bool autoScaling() const;
  double referenceScale() const;  // %
  bool outputSignalAverage() const;
  ArbPlaySettings playSettings(const ArbInfo& info) const;

  // The loaders of the dialog path and the remote rows: each replaces what is loaded.
  // CSV: a bad line ends the reading quietly and the samples before it play.
  void loadCsv(const QString& path);
  // Raw 16-bit or float pairs: a file that won't open or holds no sample changes nothing.
  // Like the Midas Blue and remote loaders, they leave a loaded sequence in place (and playing).
  void loadBin16(const QString& path);
  void loadBin32(const QString& path);
  // WAV: a file the reader refuses changes nothing, quietly.
  void loadWav(const QString& path);
  // Midas Blue: the file's sample rate becomes the mode's; a refusal is shown in a box.
  void loadMidas(const QString& path);
  // A SigMF recording: its "core:sample_rate" becomes the mode's; a refusal names the key.
  void loadSigmf(const QString& path);
  // Takes the samples as they are, named "Custom".
  void loadSamples(std::vector<Sample> samples);
  // A ".seq" file: what was loaded goes first, even if the file then fails; a bad header is
  // said in a box.
  void loadSequence(const QString& path);

  void setDefaults() override;
  // Group "ARB": "TriggerType", "SampleRate", "Period"; the waveform is not part of a preset.
  void saveSettings(QSettings* settings) override;
  void loadSettings(QSettings* settings) override;

public slots:
  void triggerModeIndexChanged(int index);
  void setSampleRate(double rate);
  void setReferenceScale(double percent);
  void setAutoScaling(bool enabled);
  void setOutputSignalAverage(bool enabled);
  void setPeriod(int period);
  void setSampleOffset(int offset);
  void setSamplesToUse(int count);
  // The "Load" box's row: its value picks the file kind; the box goes back to its empty row.
  void loadWaveformPressed(int row);
  void unloadFileButtonPressed();
  void unloadFile();
  // Saves the waveform with its rate and period; no control is connected to it.
  void saveConfigPressed();

private:
  void addControls();
  enum class Sequence { Kept, Cleared };
  // Every sample of an open reader, at most maxPeriod; then the waveform named after `path`.
  bool takeAll(IQFileReader& reader, const QString& path, Sequence sequence);
  // Stores a whole waveform as loaded from `name`, its range the whole of it.
  void takeWaveform(const QString& name, std::vector<Sample> samples, Sequence sequence,
                    const QString& error = {});
  // Nothing loaded, the sample rate kept; under the lock.
  void clearInfo();
  // Brings the period within samples to use .. maxPeriod; true when it moved.
  bool clampPeriod();
  void refreshLabels();

  mutable std::mutex lock;
  ArbInfo info;
  // The check boxes as the streaming thread reads them: a box isn't safe to read off its thread.
  bool autoScale = true;
  bool average = true;

  MyComboBox* triggerCombo;
  FrequencyEdit* sampleRateEdit;
  QCheckBox* autoScaleCheck;
  DoubleEdit* referenceScaleEdit;
  QCheckBox* averageCheck;
  IntLineEdit* periodEdit;
  IntLineEdit* offsetEdit;
  IntLineEdit* samplesToUseEdit;
  MyComboBox* loadCombo;
  QLabel* fileNameLabel;
  QLabel* fileSamplesLabel;
  QLabel* signalLengthLabel;
  QLabel* periodLengthLabel;
};
