// SPDX-License-Identifier: MIT
// A thin session around one KRT40 opened through the device library.
#pragma once

#include "core/output_tap.h"
#include "core/tune_record.h"
#include "dsp/sample.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

class ImpairmentStage;

// Status values of the library are ignored but for open and the USB status poll. Calls on a
// closed session pass handle -1, which the library refuses harmlessly.
class Device {
public:
  std::vector<int> deviceList();
  bool isOpen() const { return handle != -1; }
  bool open(int serialNumber);
  bool close();
  void setImpairments(ImpairmentStage* stage) { impairments = stage; }

  // The one way generators tune the device: rate and frequency carry the impairments'
  // corrections, while currentTune keeps the record as it was given.
  void retune(const TuneRecord& record);
  const TuneRecord& tune() const { return currentTune; }
  // The rate of the last retune as the device plays it: a rate beyond its range is clamped
  // there, and buffers are sized from what it plays, not from what was asked. A rate it took
  // as asked is the record's, without the impairments' rate error.
  double playedSampleRate() const { return rateClamped ? clampedRate : currentTune.sampleRate; }
  static constexpr double maxSampleRate = 54e6;

  bool connectionFailed();
  // Underruns the device counted since it was opened; 0 when none is open.
  int64_t underrunCount();
  void flushAndWait();
  void abort();
  void submitTrigger();
  void submitIQ(const Sample* samples, int count);
  // What submitIQ hands to the device, for the output monitor.
  OutputTap& outputTap() { return tap; }
  // A new run of the output starts: the monitor's counts begin again. The device is asked for
  // its underruns only while the monitor looks: every library call shows in the events log.
  void markOutputRestart() { tap.restart(tap.enabled() ? underrunCount() : -1); }

  void setFrequency(double hz);
  void setLevel(double dbm);
  void setSampleRate(double samplesPerSecond);
  void setRFOutputState(bool enabled);
  void setTimebase(int state);
  void setTimebaseOffset(double ppm);
  void setIQOffset(std::pair<int16_t, int16_t> offset);

  std::string modelName() const { return "KRT40A"; }
  std::string serialNumberText();
  std::string firmwareText();
  std::string temperatureText();

private:
  void noteSampleRate(double asked, int result);
  void tapOutput(const Sample* samples, int count);

  int handle = -1;
  TuneRecord currentTune;
  bool rateClamped = false;
  double clampedRate = 0.0;
  ImpairmentStage* impairments = nullptr;
  OutputTap tap;
};
