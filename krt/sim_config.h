// SPDX-License-Identifier: MIT
// The simulator's configuration, read from KRT40_SIM_* environment variables once.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace krtsim {

struct SimConfig {
  std::vector<int> devices{21000001};  // KRT40_SIM_DEVICES: serials of the connected devices
  double openMs = 1200;                // KRT40_SIM_OPEN_MS: duration of an open, >= 0
  double speed = 1;                    // KRT40_SIM_SPEED: multiple of real time; 0 unpaced
  double queueMs = 100;                // KRT40_SIM_QUEUE_MS: queue depth in ms at the rate, > 0
  std::string recordPrefix;            // KRT40_SIM_RECORD: SigMF path prefix; empty: none
  int64_t recordMax = 20000000;        // KRT40_SIM_RECORD_MAX: samples recorded at most
  std::string eventsPath;              // KRT40_SIM_EVENTS: JSON Lines log; empty: none
  std::string unplugFile;              // KRT40_SIM_UNPLUG_FILE: failure while it exists
  std::optional<double> failAfterMs;   // KRT40_SIM_FAIL_AFTER_MS: failure this long after open
  std::optional<double> temperatureC;  // KRT40_SIM_TEMPERATURE: fixed; unset: warm-up curve
};

// Parses the variables through getenv-like lookup; an empty value counts as unset, except for
// KRT40_SIM_DEVICES where it means no device. Each malformed value keeps its default and
// writes one line to err.
SimConfig parseConfig(const std::function<const char*(const char*)>& lookup, std::ostream& err);

// The process's configuration: parsed from the environment at the first call, then fixed.
const SimConfig& config();

}  // namespace krtsim
