// SPDX-License-Identifier: MIT
// The SoapySDR backend: lists the transmitters SoapySDR finds and opens them as sessions.
#include "krt/soapy_library.h"

#include <algorithm>

#include <SoapySDR/Constants.h>
#include <SoapySDR/Device.hpp>

#include "krt/sim_library.h"
#include "krt/sim_status.h"
#include "krt/soapy_mapping.h"
#include "krt/soapy_session.h"

namespace krtsim {

namespace {

std::string argValue(const SoapySDR::Kwargs& args, const char* key) {
  const auto it = args.find(key);
  return it == args.end() ? std::string() : it->second;
}

// Driver and serial where the module gives a serial, else every argument it gives.
std::string identityOf(const SoapySDR::Kwargs& args) {
  const std::string serial = argValue(args, "serial");
  if (!serial.empty()) return argValue(args, "driver") + ":" + serial;
  return SoapySDR::KwargsToString(args);
}

}  // namespace

Backend* soapyBackend() {
  static SoapyLibrary* library = new SoapyLibrary(SimLibrary::instance().events());
  return library;
}

std::map<int, SoapySDR::Kwargs> SoapyLibrary::enumerateTransmitters() {
  std::map<int, SoapySDR::Kwargs> found;
  for (const SoapySDR::Kwargs& args : SoapySDR::Device::enumerate()) {
    if (isReceiveOnlyDriver(argValue(args, "driver"))) continue;
    int serial = serialForIdentity(identityOf(args));
    while (found.count(serial)) serial = serial == 99999999 ? 90000000 : serial + 1;
    found[serial] = args;
  }
  return found;
}

int SoapyLibrary::deviceList(int* serials, int* count) {
  if (!count || *count < 0 || (*count > 0 && !serials)) return kErrArgument;
  std::map<int, SoapySDR::Kwargs> found = enumerateTransmitters();
  std::lock_guard<std::mutex> lock(mutex_);
  known_ = std::move(found);
  int n = 0;
  for (auto it = known_.begin(); it != known_.end() && n < *count; ++it) serials[n++] = it->first;
  *count = n;
  return kOk;
}

int SoapyLibrary::open(int* handle, int serialNumber) {
  if (!handle) return kErrArgument;
  *handle = -1;
  SoapySDR::Kwargs args;
  double calibrationDb = 0;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (!known_.count(serialNumber)) known_ = enumerateTransmitters();  // opened unlisted
    const auto it = known_.find(serialNumber);
    if (it == known_.end()) return kErrUnknownSerial;
    for (const auto& entry : sessions_)
      if (entry.second->serialNumber() == serialNumber) return kErrAlreadyOpen;
    args = it->second;
    if (calibration_.count(serialNumber)) calibrationDb = calibration_[serialNumber];
  }
  SoapySDR::Device* device = nullptr;
  try {
    device = SoapySDR::Device::make(args);
  } catch (...) {
    return kErrUnknownSerial;  // gone since it was listed, or held by another program
  }
  if (!device) return kErrUnknownSerial;
  std::shared_ptr<SoapySession> session;
  try {
    if (device->getNumChannels(SOAPY_SDR_TX) == 0) {
      SoapySDR::Device::unmake(device);
      return kErrUnknownSerial;
    }
    std::lock_guard<std::mutex> lock(mutex_);
    session = std::make_shared<SoapySession>(nextHandle_, serialNumber, device, events_,
                                             calibrationDb, sink_);
  } catch (...) {
    SoapySDR::Device::unmake(device);
    return kErrInternal;
  }
  std::lock_guard<std::mutex> lock(mutex_);
  *handle = nextHandle_++;
  sessions_[*handle] = session;
  return kOk;
}

int SoapyLibrary::close(int handle) {
  std::shared_ptr<SoapySession> session;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = sessions_.find(handle);
    if (it == sessions_.end()) return kErrNotOpen;
    session = it->second;
    sessions_.erase(it);
  }
  session->close();
  return kOk;
}

std::shared_ptr<Session> SoapyLibrary::find(int handle) {
  std::lock_guard<std::mutex> lock(mutex_);
  const auto it = sessions_.find(handle);
  return it == sessions_.end() ? nullptr : it->second;
}

void SoapyLibrary::setLevelCalibration(int serialNumber, double offsetDb) {
  std::vector<std::shared_ptr<SoapySession>> open;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    calibration_[serialNumber] = offsetDb;
    for (const auto& entry : sessions_)
      if (entry.second->serialNumber() == serialNumber) open.push_back(entry.second);
  }
  for (const auto& session : open) session->setCalibration(offsetDb);
}

void SoapyLibrary::setMessageSink(MessageSink sink) {
  std::lock_guard<std::mutex> lock(mutex_);
  sink_ = sink;
}

}  // namespace krtsim
