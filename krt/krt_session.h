// SPDX-License-Identifier: MIT
// One open device session as the C entry points see it, whatever backend plays it.
#pragma once

#include <cstdint>

namespace krtsim {

// Every member may be called from any thread; the library's contract is one caller per handle at
// a time. Results are the codes of sim_status.h.
class Session {
public:
  virtual ~Session() = default;

  virtual int serialNumber() const = 0;
  virtual int firmwareVersion() const = 0;

  virtual int setFrequency(double hz) = 0;
  virtual int setLevel(double dbm) = 0;
  virtual int setSampleRate(double rate) = 0;
  virtual int setDigitalTuning(int enabled) = 0;
  virtual int setIqOffset(int16_t i, int16_t q) = 0;
  virtual int setTimebase(int state) = 0;
  virtual int setTimebaseOffset(double ppm) = 0;
  virtual int setRfOutputState(int enabled) = 0;

  // Queues count interleaved I/Q samples; blocks while the device can take no more.
  virtual int submit(const float* iq, int count) = 0;
  virtual int trigger() = 0;
  virtual int flushAndWait() = 0;
  virtual int abort() = 0;
  virtual int usbStatus() = 0;
  virtual int readTemperature(float* celsius) = 0;
  virtual int underrunCount(int64_t* count) = 0;
  // Stops the session; later calls return kErrNotOpen.
  virtual void close() = 0;
};

}  // namespace krtsim
