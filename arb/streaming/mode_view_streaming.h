// SPDX-License-Identifier: MIT
// The streaming view (mode 19): an ordered list of files played block by block without end.
#pragma once

#include "arb/streaming/streaming_player.h"
#include "modes/mode_widget.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

class DoubleEdit;
class FrequencyEdit;
class MyComboBox;
class QLabel;
class QListWidget;

// The list widget's order is the order of play. Setters clamp with a logged message, refresh
// the labels and emit updated().
class ModeViewStreaming : public ModeWidget {
  Q_OBJECT

public:
  static constexpr double minSampleRate = 12500.0;
  static constexpr double maxSampleRate = 54e6;
  static constexpr double minIQScale = 0.001;  // %
  static constexpr double maxIQScale = 1e7;

  explicit ModeViewStreaming(QWidget* parent = nullptr);

  bool hasFiles() const;
  // The entries in the list's current order; a copy the generator takes at its start.
  std::vector<StreamFileEntry> getFileList() const;
  double sampleRate() const;
  double iqScale() const;  // %

  // Adds the files of `paths` that a reader of `fileType` opens; each other one is said in a
  // box and skipped. A SigMF recording added to an empty list brings its sample rate.
  void addFiles(int fileType, const QStringList& paths);

  void setDefaults() override;
  // Group "Streaming": "SampleRate", "IQScale"; the file list is not part of a preset.
  void saveSettings(QSettings* settings) override;
  void loadSettings(QSettings* settings) override;

public slots:
  void setSampleRate(double rate);
  void setIQScale(double percent);
  void loadWaveformPressed(int row);
  void unloadWaveformPressed();
  void sequenceChanged();
  void setStreamingPos(double percent);
  void stoppedStreaming();

private:
  void addControls();
  // Takes the list widget's order into `ordered` (the generator's copy) and the labels.
  void listChanged();

  std::vector<StreamFileEntry> entries;  // load order
  int nextId = 1;
  mutable std::mutex lock;
  std::vector<StreamFileEntry> ordered;  // the list's order, read by the streaming thread

  FrequencyEdit* sampleRateEdit;
  DoubleEdit* iqScaleEdit;
  MyComboBox* loadCombo;
  QListWidget* fileList;
  QLabel* totalFilesLabel;
  QLabel* totalSamplesLabel;
  QLabel* totalDurationLabel;
  QLabel* positionLabel;
};
