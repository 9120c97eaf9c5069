// SPDX-License-Identifier: MIT
// Return codes of the simulated krt_api: 0 success, positive warnings, negative errors.
#pragma once

namespace krtsim {

enum Status : int {
  kOk = 0,
  kWarnClamped = 1,        // the setting was out of range: clamped, or kept if not finite
  kWarnUnsupported = 2,    // the device has no such feature: nothing was done
  kErrNotOpen = -1,        // the handle is not an open session; nothing was done
  kErrArgument = -2,       // null pointer or negative count; nothing was done
  kErrUsb = -3,            // the USB connection has failed (also krtGetUSBStatus's value)
  kErrUnknownSerial = -4,  // open: no connected device has this serial number
  kErrAlreadyOpen = -5,    // open: the device is open in another session
  kErrInternal = -6,       // an exception inside the library (out of memory, no thread)
};

}  // namespace krtsim
