// SPDX-License-Identifier: MIT
// Cheap, rate-limited test for the presence of KRT40_SIM_UNPLUG_FILE.
#pragma once

#include <atomic>
#include <string>

namespace krtsim {

// present() is called many times a second by every open device (USB status polls, the player);
// it looks at the file system at most once per kCheckPeriodSeconds and otherwise answers from
// the last look. Thread-safe.
class UnplugWatch {
public:
  static constexpr double kCheckPeriodSeconds = 0.005;

  explicit UnplugWatch(std::string path) : path_(std::move(path)) {}

  // Whether the file existed at the last look; now is nowSeconds(). fresh: look now (a new
  // session must not inherit an answer from before the file was removed).
  bool present(double now, bool fresh = false);

private:
  const std::string path_;
  std::atomic<double> lastCheck_{-1.0};
  std::atomic<bool> present_{false};
};

}  // namespace krtsim
