// SPDX-License-Identifier: MIT
// A family of devices the C entry points can list, open and play: simulated or SoapySDR.
#pragma once

#include <memory>

#include "krt/krt_session.h"

namespace krtsim {

// Reports a message meant for the user's error log: code and text.
using MessageSink = void (*)(int code, const char* message);

// Handles of every backend live in one space: each backend hands out handles from its own
// first handle upwards, so a handle tells which backend holds it.
class Backend {
public:
  virtual ~Backend() = default;
  virtual int deviceList(int* serials, int* count) = 0;
  virtual int open(int* handle, int serialNumber) = 0;
  virtual int close(int handle) = 0;
  virtual std::shared_ptr<Session> find(int handle) = 0;
  virtual bool ownsHandle(int handle) const = 0;
  // Level in dBm of a full-scale sample at gain 0 dB, for one device by serial number.
  virtual void setLevelCalibration(int /*serialNumber*/, double /*offsetDb*/) {}
  virtual void setMessageSink(MessageSink /*sink*/) {}
};

// The SoapySDR backend, or null in a build without SoapySDR.
Backend* soapyBackend();

}  // namespace krtsim
