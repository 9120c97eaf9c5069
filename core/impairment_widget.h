// SPDX-License-Identifier: MIT
// The "Signal Impairments" panel: settings that act on the output whatever the mode.
#pragma once

#include "core/impairment_stage.h"

#include <QWidget>

class QSettings;

#include <cstdint>
#include <utility>

// Until its controls exist the panel is neutral: no offsets, no noise, no filter, and chunks
// pass through unchanged. The engine already calls it where the full panel will act.
class ImpairmentWidget : public QWidget, public ImpairmentStage {
  Q_OBJECT
public:
  explicit ImpairmentWidget(QWidget* parent = nullptr);

  double frequencyOffset() const override { return 0.0; }
  double sampleRateFactor() const override { return 1.0; }
  bool lowSpurMode() const override { return true; }
  std::pair<int16_t, int16_t> iqOffset() const { return {0, 0}; }
  double timebaseOffset() const { return 0.0; }

  void setDefaults() {}
  // Group "Impairments" of a preset.
  void saveSettings(QSettings* settings);
  void loadSettings(QSettings* settings);
  void invalidateNoise() { noiseValid = false; }
  void process(const Sample* in, Sample* out, int count) override;

signals:
  void impairmentsChanged();
  void forceAWGNBandwidthSignal(double bw);

public slots:
  void dockLocationChanged(Qt::DockWidgetArea area) {}

private:
  bool noiseValid = false;
};
