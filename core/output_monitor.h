// SPDX-License-Identifier: MIT
// The "Output Monitor" dock's panel: spectrum, CCDF and I/Q of what goes to the device, live.
#pragma once

#include "dsp/output_analysis.h"

#include <QString>
#include <QWidget>

#include <cstdint>

class AMPlot;
class Device;
class QCheckBox;
class QComboBox;
class QLabel;
class QSpinBox;
class QTimer;
struct OutputSnapshot;
struct PlotSeries;

class OutputMonitor : public QWidget {
  Q_OBJECT
public:
  explicit OutputMonitor(Device* device, QWidget* parent = nullptr);

  // Takes the snapshot the streaming thread left, if any, into the figures and the plots;
  // false when none was waiting or the display is frozen. The timer calls it while shown.
  bool refresh();
  // Adds one snapshot to the figures and redraws; what refresh does with the tap's.
  void showSnapshot(const OutputSnapshot& snapshot);
  void setFrozen(bool frozen);
  bool frozen() const;
  void setBins(int bins);
  void clearFigures();

  const SpectrumAverager& spectrum() const { return spectrumAverager; }
  const CcdfAccumulator& ccdf() const { return ccdfAccumulator; }
  double centerFrequencyHz() const { return centerHz; }
  double sampleRateHz() const { return rateHz; }

  // The current spectrum and CCDF with the readouts, as a CSV file; false if it can't be
  // written.
  bool saveCsv(const QString& path) const;
  // The panel as it is shown, as an image.
  bool savePng(const QString& path);

public slots:
  void saveCsvClicked();
  void savePngClicked();

protected:
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

private:
  QWidget* buildControls();
  QWidget* buildReadouts();
  void takeSnapshot(const OutputSnapshot& snapshot);
  void plotSpectrum();
  void plotCcdf();
  void plotIq(const OutputSnapshot& snapshot);
  void showReadouts(const OutputSnapshot& snapshot);

  Device* device;
  SpectrumAverager spectrumAverager;
  CcdfAccumulator ccdfAccumulator;
  uint32_t generation = 0;
  bool seenSnapshot = false;
  double centerHz = 0.0;
  double rateHz = 0.0;

  QTimer* timer = nullptr;
  QComboBox* binsCombo = nullptr;
  QSpinBox* averagesSpin = nullptr;
  QComboBox* iqStyleCombo = nullptr;
  QCheckBox* freezeCheck = nullptr;
  QLabel* rateLabel = nullptr;
  QLabel* meanLabel = nullptr;
  QLabel* paprLabel = nullptr;
  QLabel* sentLabel = nullptr;
  QLabel* underrunLabel = nullptr;
  AMPlot* spectrumPlot = nullptr;
  AMPlot* ccdfPlot = nullptr;
  AMPlot* iqPlot = nullptr;
  PlotSeries* spectrumSeries = nullptr;
  PlotSeries* ccdfSeries = nullptr;
  PlotSeries* gaussianSeries = nullptr;
  PlotSeries* iqSeries = nullptr;
};
