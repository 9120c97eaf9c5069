// SPDX-License-Identifier: MIT
// Monotonic time of the simulator, in seconds since the library was loaded.
#include "krt/sim_clock.h"

#include <chrono>

namespace krtsim {

namespace {
// Dynamic initialisation runs when the shared library is loaded.
const std::chrono::steady_clock::time_point kLoadTime = std::chrono::steady_clock::now();
}  // namespace

double nowSeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - kLoadTime).count();
}

}  // namespace krtsim
