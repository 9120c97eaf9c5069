// SPDX-License-Identifier: MIT
// One open SoapySDR transmitter playing the KRT40's calls.
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include <SoapySDR/Device.hpp>

#include "krt/krt_backend.h"
#include "krt/krt_session.h"
#include "krt/sim_settings.h"
#include "krt/soapy_mapping.h"

namespace krtsim {

class EventLog;

// Channel 0 of the device's transmit side, a CF32 stream. Settings take effect at once (a
// SoapySDR device has no queue of timed settings); the level's digital part scales what is
// submitted after it. The stream is activated by the first submit after an open, abort or flush.
//
// Thread-safety: settings come from the streaming thread and the status poll from the window;
// the device's own calls are serialised by mutex_, except the blocking write, which only the
// submitting thread makes.
class SoapySession final : public Session {
public:
  SoapySession(int handle, int serialNumber, SoapySDR::Device* device, EventLog& events,
               double calibrationDb, MessageSink sink);
  ~SoapySession() override;
  SoapySession(const SoapySession&) = delete;
  SoapySession& operator=(const SoapySession&) = delete;

  int serialNumber() const override { return serial_; }
  int firmwareVersion() const override { return firmware_; }
  void setCalibration(double calibrationDb);

  int setFrequency(double hz) override;
  int setLevel(double dbm) override;
  int setSampleRate(double rate) override;
  int setDigitalTuning(int enabled) override;
  int setIqOffset(int16_t i, int16_t q) override;
  int setTimebase(int state) override;
  int setTimebaseOffset(double ppm) override;
  int setRfOutputState(int enabled) override;

  int submit(const float* iq, int count) override;
  int trigger() override;
  int flushAndWait() override;
  int abort() override;
  int usbStatus() override;
  int readTemperature(float* celsius) override;
  int underrunCount(int64_t* count) override;
  void close() override;

private:
  template <typename F>
  int control(F&& f);
  int applyLevelLocked();
  bool activate();
  int writeAll(const float* iq, int count);
  void pollStatus();
  void countUnderrun();
  void stopStream();
  void markFailed();
  void report(const std::string& message);

  const int handle_;
  const int serial_;
  int firmware_ = 0;
  SoapySDR::Device* device_;
  SoapySDR::Stream* stream_ = nullptr;
  EventLog& events_;
  MessageSink sink_;

  std::mutex mutex_;
  DeviceSettings settings_;
  double calibrationDb_;
  double gainMin_ = 0;
  double gainMax_ = 0;
  std::vector<RateRange> rates_;
  double playedRate_ = 0;
  std::set<double> reportedRates_;
  bool reportedLevel_ = false;

  std::atomic<float> scale_{1.0f};  // digital part of the level; 0 while RF is off
  std::atomic<bool> failed_{false};
  std::atomic<bool> closed_{false};
  std::atomic<bool> active_{false};
  std::atomic<int64_t> underruns_{0};
  bool statusSupported_ = true;
  int64_t written_ = 0;                 // samples written in this session
  int64_t writtenSinceActivation_ = 0;  // since the stream was last activated
  double activatedAt_ = 0;              // seconds, steady clock
  std::vector<float> scaled_;  // a block of submitted samples when the level needs a digital scale
};

}  // namespace krtsim
