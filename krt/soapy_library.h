// SPDX-License-Identifier: MIT
// The SoapySDR backend: lists the transmitters SoapySDR finds and opens them as sessions.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include <SoapySDR/Types.hpp>

#include "krt/krt_backend.h"

namespace krtsim {

class EventLog;
class SoapySession;

// Devices are known by a serial number derived from their identity (soapy_mapping.h); a list
// call remembers the arguments that open each one. Handles start at kFirstHandle and are never
// reused within a process.
class SoapyLibrary final : public Backend {
public:
  static constexpr int kFirstHandle = 1 << 20;  // the simulated devices' end

  explicit SoapyLibrary(EventLog& events) : events_(events) {}

  int deviceList(int* serials, int* count) override;
  int open(int* handle, int serialNumber) override;
  int close(int handle) override;
  std::shared_ptr<Session> find(int handle) override;
  bool ownsHandle(int handle) const override { return handle >= kFirstHandle; }
  void setLevelCalibration(int serialNumber, double offsetDb) override;
  void setMessageSink(MessageSink sink) override;

private:
  std::map<int, SoapySDR::Kwargs> enumerateTransmitters();

  EventLog& events_;
  std::mutex mutex_;
  std::map<int, SoapySDR::Kwargs> known_;  // by serial number, from the last list
  std::map<int, double> calibration_;      // dB, by serial number
  std::map<int, std::shared_ptr<SoapySession>> sessions_;
  int nextHandle_ = kFirstHandle;
  MessageSink sink_ = nullptr;
};

}  // namespace krtsim
