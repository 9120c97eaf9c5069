// SPDX-License-Identifier: MIT
// The streaming thread: which generator runs, and the generators of the plain carrier.
#include "core/central_widget.h"

#include "core/device.h"
#include "modes/mode_widget.h"

#include <QButtonGroup>

void CentralWidget::startStreaming() {
  engine.startStreaming([this] { streamingThreadMain(); });
}

void CentralWidget::startStreamingQuiet() {
  engine.startStreamingQuiet([this] { streamingThreadMain(); });
}

void CentralWidget::stopStreaming() { engine.stopStreaming(); }

void CentralWidget::submitWaveform(const Sample* samples, int64_t length, bool singleShot) {
  engine.submitWaveform(samples, length, singleShot);
}

void CentralWidget::streamingThreadMain() {
  const int modeIndex = currentMode();
  if (!rfEnabled()) {
    emit updateStatusBarModeSignal("Off");
    runOffState();
  } else if (!modEnabled()) {
    emit updateStatusBarModeSignal("CW");
    generateCW();
  } else {
    if (ModeWidget* view = activeMode.load()) emit updateStatusBarModeSignal(view->modeName());
    runGenerator(modeIndex);
  }
  // Also after a lost device: drops whatever the device still had queued.
  device->abort();
}

// Indices without a generator leave the thread at once; `streaming` stays set and the next
// restart joins it.
void CentralWidget::runGenerator(int modeIndex) {
  switch (modeIndex) {
    case 0: generateCW(); break;
    case 1: generateAM(); break;
    case 2: generateFM(); break;
    case 3: generatePulse(); break;
    case 4: generateMultitone(); break;
    case 5: generateStepSweep(); break;
    case 6: generateRampSweep(); break;
    default: break;
  }
}

void CentralWidget::retuneForMode(double sampleRateHz, double levelOffsetDb) {
  device->retune(TuneRecord{frequency(), level() - levelOffsetDb, sampleRateHz, 0.0, 0.0});
}

void CentralWidget::runOffState() { engine.runOffState(frequency(), level()); }

void CentralWidget::generateCW() { engine.generateCW(frequency(), level()); }
