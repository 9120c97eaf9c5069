// SPDX-License-Identifier: MIT
// The process-wide state of the simulated krt_api: configuration, open sessions, recording.
#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>

#include "krt/krt_backend.h"
#include "krt/sim_config.h"
#include "krt/sim_events.h"
#include "krt/sim_unplug_watch.h"

namespace krtsim {

class SimDevice;
class SimRecorder;

// Created at the first call into the library (which reads the configuration) and never
// destroyed, so that threads still running at exit find it intact.
//
// Handles count up from 0 and are never reused within a process, so a stale handle stays
// invalid. The recording (KRT40_SIM_RECORD) is one per process: it belongs to one open session
// at a time, the first one opened while no other holds it. Sessions recorded one after another
// (close, then open again) continue the same files, so a whole run of the application ends up
// in one recording; a device opened while another holds the recording is not recorded. The
// meta file is brought up to date when the holding session closes, and at process exit.
class SimLibrary final : public Backend {
public:
  static constexpr int kLastHandle = 1 << 20;  // where the SoapySDR backend's handles begin
  static SimLibrary& instance();

  const SimConfig& config() const { return config_; }
  EventLog& events() { return events_; }

  int deviceList(int* serials, int* count) override;
  int open(int* handle, int serialNumber) override;  // takes KRT40_SIM_OPEN_MS
  int close(int handle) override;
  std::shared_ptr<Session> find(int handle) override;
  bool ownsHandle(int handle) const override { return handle >= 0 && handle < kLastHandle; }
  int setPowerSavingCpuMode(int enabled);

private:
  SimLibrary();
  std::shared_ptr<SimRecorder> claimRecorderLocked(int handle);
  void syncRecorderAtExit();

  const SimConfig& config_;
  EventLog events_;
  UnplugWatch unplug_;
  std::atomic<bool> powerSaving_{false};

  std::mutex mutex_;
  std::map<int, std::shared_ptr<SimDevice>> devices_;
  int nextHandle_ = 0;
  std::shared_ptr<SimRecorder> recorder_;
  int recorderHolder_ = -1;
  bool toldNotRecorded_ = false;
};

}  // namespace krtsim
