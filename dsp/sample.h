// SPDX-License-Identifier: MIT
// The complex sample that flows from every generator to the device.
#pragma once

#include <complex>

// I then Q, two 32-bit floats, interleaved in memory; full scale is magnitude 1.0.
using Sample = std::complex<float>;

static_assert(sizeof(Sample) == 2 * sizeof(float), "Sample must be two packed floats");
