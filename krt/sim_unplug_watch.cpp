// SPDX-License-Identifier: MIT
// Cheap, rate-limited test for the presence of KRT40_SIM_UNPLUG_FILE.
#include "krt/sim_unplug_watch.h"

#include <sys/stat.h>

namespace krtsim {

bool UnplugWatch::present(double now, bool fresh) {
  if (path_.empty()) return false;
  double last = lastCheck_.load(std::memory_order_relaxed);
  if (!fresh && last >= 0 && now - last < kCheckPeriodSeconds)
    return present_.load(std::memory_order_relaxed);
  // One caller refreshes; the others use the previous answer meanwhile.
  if (fresh || lastCheck_.compare_exchange_strong(last, now, std::memory_order_relaxed)) {
    lastCheck_.store(now, std::memory_order_relaxed);
    struct stat st;
    present_.store(::stat(path_.c_str(), &st) == 0, std::memory_order_relaxed);
  }
  return present_.load(std::memory_order_relaxed);
}

}  // namespace krtsim
