// SPDX-License-Identifier: MIT
// The streaming thread: which generator runs, and the generators of the plain carrier.
#include "core/central_widget.h"

#include "core/device.h"
#include "core/impairment_widget.h"
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

void CentralWidget::applyChannelFilter(Sample* samples, int length) {
  impairments->applyChannelFilter(samples, length);
}

void CentralWidget::prepareNoise(double signalPowerDb, double sampleRateHz) {
  impairments->prepareNoise(signalPowerDb, sampleRateHz);
}

void CentralWidget::processImpairments(const Sample* in, Sample* out, int count) {
  impairments->process(in, out, count);
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
  if (const ModeRegistry::Generator* generator = modeUnits.generator(modeIndex))
    (*generator)(*this);
}

void CentralWidget::runOffState() { engine.runOffState(frequency(), level()); }

void CentralWidget::generateCW() { engine.generateCW(frequency(), level()); }

// ---- What the mode units use on the streaming thread ----------------------------------------

bool CentralWidget::takeTriggerRequest() {
  if (engine.triggerRequests.load(std::memory_order_relaxed) < 1) return false;
  engine.triggerRequests.store(0, std::memory_order_relaxed);
  return true;
}

void CentralWidget::retune(double sampleRateHz, double levelOffsetDb) {
  device->retune(TuneRecord{frequency(), level() - levelOffsetDb, sampleRateHz, 0.0, 0.0});
}

void CentralWidget::setDeviceSampleRate(double sampleRateHz) {
  device->setSampleRate(sampleRateHz);
}

void CentralWidget::setDeviceFrequency(double frequencyHz) { device->setFrequency(frequencyHz); }

void CentralWidget::setDeviceLevel(double levelDbm) { device->setLevel(levelDbm); }

void CentralWidget::submitIQ(const Sample* samples, int count) { device->submitIQ(samples, count); }

void CentralWidget::flushAndWait() { device->flushAndWait(); }

void CentralWidget::submitTrigger() { device->submitTrigger(); }

bool CentralWidget::connectionLost() {
  if (!device->connectionFailed()) return false;
  emit deviceConnectionLost();
  return true;
}

void CentralWidget::setOutputReady() { opcGate.setOutputReady(true); }
