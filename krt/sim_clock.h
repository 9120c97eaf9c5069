// SPDX-License-Identifier: MIT
// Monotonic time of the simulator, in seconds since the library was loaded.
#pragma once

namespace krtsim {

// Seconds since the library was loaded (steady clock), as a double; never goes back.
double nowSeconds();

}  // namespace krtsim
