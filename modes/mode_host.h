// SPDX-License-Identifier: MIT
// What the instrument offers a mode unit: the panel, the device and the submit loop on the
// streaming thread, and mode selection for its remote rows.
#pragma once

#include "dsp/sample.h"

#include <atomic>
#include <cstdint>

class QString;
class Scpi;

// The controller implements it; a unit's generator and row handlers see nothing else of it.
class ModeHost {
public:
  virtual ~ModeHost() = default;

  // ---- Streaming thread ----
  // The panel's frequency (Hz) and level (dBm), as a generator reads them when it starts.
  virtual double frequency() const = 0;
  virtual double level() const = 0;
  // The run flag: a generator's loop, or a long build, ends when it falls.
  virtual const std::atomic<bool>& runFlag() const = 0;
  bool isStreaming() const { return runFlag().load(std::memory_order_relaxed); }
  // Consumes the pending trigger request, if any; requests made meanwhile collapse into one.
  virtual bool takeTriggerRequest() = 0;
  // Tunes to the panel's frequency and its level less `levelOffsetDb`, at `sampleRateHz`,
  // with the impairments' corrections.
  virtual void retune(double sampleRateHz, double levelOffsetDb = 0.0) = 0;
  // Plays `length` samples end to end through the impairments until the run flag falls;
  // single shot: one pass per trigger.
  virtual void submitWaveform(const Sample* samples, int64_t length, bool singleShot) = 0;

  // The impairment chain, for the generators that honour it, once a build and in this order:
  // the channel filter over the whole waveform (when enabled), then the noise record built
  // against the waveform's mean power in dB (when AWGN is on). Loops of their own pass each
  // chunk through processImpairments, as submitWaveform does.
  virtual void applyChannelFilter(Sample* samples, int length) = 0;
  virtual void prepareNoise(double signalPowerDb, double sampleRateHz) = 0;
  virtual void processImpairments(const Sample* in, Sample* out, int count) = 0;

  // Plain device calls for generators that run loops of their own: no corrections.
  virtual void setDeviceSampleRate(double sampleRateHz) = 0;
  virtual void setDeviceFrequency(double frequencyHz) = 0;
  virtual void setDeviceLevel(double levelDbm) = 0;
  virtual void submitIQ(const Sample* samples, int count) = 0;
  virtual void flushAndWait() = 0;
  // Marks the start of a triggered pass in the device's stream.
  virtual void submitTrigger() = 0;
  // Polls the USB status; a failure is reported to the window and answers true.
  virtual bool connectionLost() = 0;
  // Counts the output as ready for "*OPC" now.
  virtual void setOutputReady() = 0;

  // Replaces the mode's name in the status bar, queued to the user interface thread: what a
  // generator that plays nothing says instead.
  virtual void setStatusText(const QString& text) = 0;

  // The build-progress dialog, queued to the user interface thread.
  virtual void showProgress() = 0;
  virtual void setProgress(int percent) = 0;
  virtual void hideProgress() = 0;

  // ---- User interface thread ----
  // Mode index of the checked "Enabled" box; 0 while none is.
  virtual int currentMode() const = 0;
  // Checks the mode's "Enabled" box as a click would.
  virtual void selectMode(int modeIndex) = 0;
};

// A mode's first remote row. The query answers whether the mode is the active one; ON selects
// it as the user would, and OFF does nothing at all.
void handleModeStateRow(ModeHost& host, Scpi& command, int modeIndex, bool query);
