// SPDX-License-Identifier: MIT
// The process-wide state of the simulated krt_api: configuration, open sessions, recording.
#include "krt/sim_library.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <thread>

#include "krt/sim_device.h"
#include "krt/sim_recorder.h"
#include "krt/sim_status.h"

namespace krtsim {

namespace {
constexpr double kCloseSyncSeconds = 60;  // a recording's data and meta reach the disk
constexpr double kExitSyncSeconds = 10;
}  // namespace

SimLibrary& SimLibrary::instance() {
  static SimLibrary* library = new SimLibrary();
  return *library;
}

SimLibrary::SimLibrary()
    : config_(krtsim::config()), events_(config_.eventsPath), unplug_(config_.unplugFile) {}

int SimLibrary::deviceList(int* serials, int* count) {
  if (!count || *count < 0 || (*count > 0 && !serials)) return kErrArgument;
  const int n = std::min<int>(*count, static_cast<int>(config_.devices.size()));
  std::copy(config_.devices.begin(), config_.devices.begin() + n, serials);
  *count = n;
  return kOk;
}

int SimLibrary::open(int* handle, int serialNumber) {
  if (!handle) return kErrArgument;
  std::this_thread::sleep_for(std::chrono::duration<double, std::milli>(config_.openMs));
  std::lock_guard<std::mutex> lock(mutex_);
  *handle = -1;
  if (std::find(config_.devices.begin(), config_.devices.end(), serialNumber) ==
      config_.devices.end()) {
    return kErrUnknownSerial;
  }
  for (const auto& entry : devices_) {
    if (entry.second->serialNumber() == serialNumber) return kErrAlreadyOpen;
  }
  if (nextHandle_ >= kLastHandle) return kErrInternal;
  const int h = nextHandle_++;
  std::shared_ptr<SimRecorder> recorder = claimRecorderLocked(h);
  try {
    devices_[h] = std::make_shared<SimDevice>(h, serialNumber, config_, events_, unplug_, recorder);
  } catch (...) {
    if (recorderHolder_ == h) recorderHolder_ = -1;
    throw;
  }
  *handle = h;
  return kOk;
}

int SimLibrary::close(int handle) {
  std::shared_ptr<SimDevice> device;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    const auto it = devices_.find(handle);
    if (it == devices_.end()) return kErrNotOpen;
    device = it->second;
    devices_.erase(it);
  }
  device->close();
  bool held = false;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (recorderHolder_ == handle) {
      recorderHolder_ = -1;
      held = true;
    }
  }
  if (held && !recorder_->sync(kCloseSyncSeconds)) {
    std::cerr << "krt_api: the recording did not reach the disk in time" << std::endl;
  }
  return kOk;
}

std::shared_ptr<Session> SimLibrary::find(int handle) {
  std::lock_guard<std::mutex> lock(mutex_);
  const auto it = devices_.find(handle);
  return it == devices_.end() ? nullptr : it->second;
}

int SimLibrary::setPowerSavingCpuMode(int enabled) {
  // Nothing to save in a simulation; the setting is kept for completeness.
  powerSaving_ = enabled != 0;
  return enabled == 0 || enabled == 1 ? kOk : kWarnClamped;
}

std::shared_ptr<SimRecorder> SimLibrary::claimRecorderLocked(int handle) {
  if (config_.recordPrefix.empty()) return nullptr;
  if (recorderHolder_ >= 0) {
    if (!toldNotRecorded_) {
      std::cerr << "krt_api: handle " << handle << " is not recorded: handle " << recorderHolder_
                << " holds the recording" << std::endl;
      toldNotRecorded_ = true;
    }
    return nullptr;
  }
  if (!recorder_) {
    recorder_ =
        std::make_shared<SimRecorder>(config_.recordPrefix, config_.recordMax, config_.speed <= 0);
    std::atexit([] { SimLibrary::instance().syncRecorderAtExit(); });
  }
  recorderHolder_ = handle;
  return recorder_;
}

void SimLibrary::syncRecorderAtExit() {
  std::shared_ptr<SimRecorder> recorder;
  {
    std::lock_guard<std::mutex> lock(mutex_);
    recorder = recorder_;
  }
  if (recorder) recorder->sync(kExitSyncSeconds);
}

}  // namespace krtsim
