// SPDX-License-Identifier: MIT
// A build without SoapySDR: the backend is absent and only the simulated devices exist.
#include "krt/krt_backend.h"

namespace krtsim {

Backend* soapyBackend() { return nullptr; }

}  // namespace krtsim
