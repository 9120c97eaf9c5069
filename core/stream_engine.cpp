// SPDX-License-Identifier: MIT
// The streaming thread and the shared submit routine.
#include "core/stream_engine.h"

#include "core/device.h"
#include "core/impairment_stage.h"
#include "core/opc_gate.h"
#include "core/tune_record.h"

#include <pthread.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <string>

namespace {

constexpr auto idlePoll = std::chrono::milliseconds(16);

void idle() { std::this_thread::sleep_for(idlePoll); }

}  // namespace

StreamEngine::StreamEngine(Device* device, OpcGate* opcGate) : device(device), opcGate(opcGate) {}

StreamEngine::~StreamEngine() { stopStreaming(); }

void StreamEngine::startStreaming(std::function<void()> threadMain) {
  launch(std::move(threadMain), "KRT40 Streaming Thread");
}

void StreamEngine::startStreamingQuiet(std::function<void()> threadMain) {
  launch(std::move(threadMain), nullptr);
}

void StreamEngine::launch(std::function<void()> threadMain, const char* name) {
  if (streaming) return;
  // A finished thread that was never joined would end the program at the next assignment;
  // join it first instead.
  if (streamThread.joinable()) streamThread.join();
  device->markOutputRestart();
  streaming = true;
  streamThread = std::thread(std::move(threadMain));
  if (name) {
    // Linux limits thread names to 15 characters.
    pthread_setname_np(streamThread.native_handle(), std::string(name).substr(0, 15).c_str());
  }
}

void StreamEngine::stopStreaming() {
  streaming = false;
  if (streamThread.joinable()) streamThread.join();
}

int StreamEngine::chunkLength() const {
  double chunk = device->playedSampleRate() / 60.0;
  if (!(chunk > 0.0)) return 0;
  return static_cast<int>(std::min(chunk, 2e9));
}

bool StreamEngine::checkConnection() {
  if (!device->connectionFailed()) return true;
  if (connectionLost) connectionLost();
  return false;
}

void StreamEngine::processAndSubmit(const Sample* chunkSamples, int count) {
  if (submitScratch.size() < static_cast<size_t>(count))
    submitScratch.resize(static_cast<size_t>(count));
  if (impairments)
    impairments->process(chunkSamples, submitScratch.data(), count);
  else
    std::memcpy(submitScratch.data(), chunkSamples, sizeof(Sample) * static_cast<size_t>(count));
  device->submitIQ(submitScratch.data(), count);
}

void StreamEngine::submitWaveform(const Sample* samples, int64_t length, bool singleShot) {
  const int chunk = chunkLength();
  if (chunkScratch.size() < static_cast<size_t>(chunk))
    chunkScratch.resize(static_cast<size_t>(chunk));
  if (singleShot)
    submitSingleShot(samples, length, chunk);
  else
    submitContinuous(samples, length, chunk);
}

void StreamEngine::submitContinuous(const Sample* samples, int64_t length, int chunk) {
  const int64_t readyThreshold = static_cast<int64_t>(device->playedSampleRate() / 10.0);
  int64_t submitted = 0;
  int64_t position = 0;
  if (length <= 0) {
    // Nothing to replay: stay silent until stopped.
    while (keepRunning()) idle();
    return;
  }
  while (keepRunning()) {
    // Replay end to end; chunk boundaries are not aligned with the period.
    for (int filled = 0; filled < chunk;) {
      if (position == length) position = 0;
      const int64_t run = std::min<int64_t>(chunk - filled, length - position);
      std::memcpy(&chunkScratch[static_cast<size_t>(filled)], samples + position,
                  sizeof(Sample) * static_cast<size_t>(run));
      filled += static_cast<int>(run);
      position += run;
    }
    processAndSubmit(chunkScratch.data(), chunk);
    if (submitted <= readyThreshold) {
      submitted += chunk;
      // A setting counts as complete after a tenth of a second of output.
      if (submitted > readyThreshold) opcGate->setOutputReady(true);
    }
    if (!checkConnection()) return;
    if (chunk == 0) idle();  // below 60 samples a second the chunks are empty; don't spin
  }
}

void StreamEngine::submitSingleShot(const Sample* samples, int64_t length, int chunk) {
  opcGate->setOutputReady(true);
  if (!keepRunning()) return;
  int64_t position = length;  // idle until the first trigger
  for (;;) {
    while (position >= length) {
      // A request is a flag, not a count: presses during a pass start one more pass.
      if (triggerRequests.load(std::memory_order_relaxed) > 0) {
        triggerRequests.store(0, std::memory_order_relaxed);
        position = 0;
      }
      if (!keepRunning()) return;
      idle();
    }
    if (position == 0) device->submitTrigger();

    // The sample that completes the pass is copied but not counted, so it is never sent.
    int count = 0;
    bool last = false;
    while (count < chunk) {
      chunkScratch[static_cast<size_t>(count)] = samples[position];
      ++position;
      if (position == length) {
        last = true;
        break;
      }
      ++count;
    }
    processAndSubmit(chunkScratch.data(), count);
    if (last) device->flushAndWait();
    if (!checkConnection()) return;
    if (!keepRunning()) return;
    if (chunk == 0) idle();
  }
}

void StreamEngine::runOffState(double frequencyHz, double levelDbm) {
  device->retune(TuneRecord{frequencyHz, levelDbm, cwSampleRate, 0.0, 0.0});
  opcGate->setOutputReady(true);
  while (keepRunning()) idle();
  // The output stage stays enabled when the thread leaves; "off" means no samples flow.
  device->setRFOutputState(true);
}

void StreamEngine::generateCW(double frequencyHz, double levelDbm) {
  device->retune(TuneRecord{frequencyHz, levelDbm, cwSampleRate, 0.0, 0.0});
  std::vector<Sample> buffer(1000000, Sample(1.0f, 0.0f));
  submitWaveform(buffer.data(), static_cast<int64_t>(buffer.size()), false);
}
