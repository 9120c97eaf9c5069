// SPDX-License-Identifier: MIT
// The streaming thread's machinery: thread start and stop, and the shared submit routine.
#pragma once

#include "dsp/sample.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <thread>
#include <vector>

class Device;
class ImpairmentStage;
class OpcGate;

// Owns the run flag, the trigger request and the thread; knows nothing of widgets, so that the
// steady loop can be tested and measured on its own. A change reaches a running loop only by
// `streaming` going false; the loop polls it once a chunk.
class StreamEngine {
public:
  StreamEngine(Device* device, OpcGate* opcGate);
  ~StreamEngine();
  StreamEngine(const StreamEngine&) = delete;
  StreamEngine& operator=(const StreamEngine&) = delete;

  void setImpairments(ImpairmentStage* stage) { impairments = stage; }
  // Called on the streaming thread when the USB status reports a failure.
  void setConnectionLostHandler(std::function<void()> handler) {
    connectionLost = std::move(handler);
  }

  // Both start `threadMain` on a new thread if none runs; the first names it for debuggers.
  void startStreaming(std::function<void()> threadMain);
  void startStreamingQuiet(std::function<void()> threadMain);
  void stopStreaming();
  bool isStreaming() const { return streaming.load(std::memory_order_relaxed); }
  void requestTrigger() { triggerRequests.store(1, std::memory_order_relaxed); }

  // Plays `length` samples end to end until `streaming` falls or the device is lost, in chunks
  // of 1/60 s at the rate of the last retune. Single shot: one pass per trigger, each starting
  // with a trigger mark; the pass never sends its last sample.
  void submitWaveform(const Sample* samples, int64_t length, bool singleShot);

  // Output held off: tuned, nothing submitted, until stopped.
  void runOffState(double frequencyHz, double levelDbm);
  // Plain carrier: 1,000,000 samples of (1, 0) at 50e6.
  void generateCW(double frequencyHz, double levelDbm);

  static constexpr double cwSampleRate = 50e6;

  std::atomic<bool> streaming{false};
  std::atomic<int> triggerRequests{0};
  // What is handed to the device; it only grows.
  std::vector<Sample> submitScratch;

private:
  void launch(std::function<void()> threadMain, const char* name);
  void submitContinuous(const Sample* samples, int64_t length, int chunk);
  void submitSingleShot(const Sample* samples, int64_t length, int chunk);
  void processAndSubmit(const Sample* chunkSamples, int count);
  bool checkConnection();
  int chunkLength() const;
  bool keepRunning() const { return streaming.load(std::memory_order_relaxed); }

  Device* device;
  OpcGate* opcGate;
  ImpairmentStage* impairments = nullptr;
  std::function<void()> connectionLost;
  std::thread streamThread;
  // Copy of the waveform's samples for one chunk; kept between runs so restarts don't allocate.
  std::vector<Sample> chunkScratch;
};
