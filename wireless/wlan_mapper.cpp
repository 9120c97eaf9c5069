// SPDX-License-Identifier: MIT
// Gray-coded BPSK to QAM256 constellation mapping of coded bits, unit mean power.
#include "wireless/wlan_mapper.h"

#include "wireless/rate_params.h"

#include <cmath>

namespace {

struct Axis {
  int bits;            // bits per axis
  const float* levels; // indexed by the axis bits' value
  float scale;         // makes the mean power of the square constellation 1
};

const float kQpsk[] = {-1, 1};
const float kQam16[] = {-3, -1, 3, 1};
const float kQam64[] = {-7, -5, -1, -3, 7, 5, 1, 3};
const float kQam256[] = {-15, -13, -9, -11, -1, -3, -7, -5, 15, 13, 9, 11, 1, 3, 7, 5};

Axis axisOf(int modulation) {
  switch (modulation) {
    case WlanQpsk: return {1, kQpsk, static_cast<float>(1.0 / std::sqrt(2.0))};
    case WlanQam16: return {2, kQam16, static_cast<float>(1.0 / std::sqrt(10.0))};
    case WlanQam64: return {3, kQam64, static_cast<float>(1.0 / std::sqrt(42.0))};
    default: return {4, kQam256, static_cast<float>(1.0 / std::sqrt(170.0))};
  }
}

int axisValue(const uint8_t* bits, int count) {
  int value = 0;
  for (int i = 0; i < count; ++i) value = (value << 1) | (bits[i] & 1);
  return value;
}

}  // namespace

ComplexVector mapBpsk(const BitVector& bits) {
  ComplexVector out(bits.size());
  for (size_t i = 0; i < bits.size(); ++i) out[i] = Sample((bits[i] & 1) ? 1.0f : -1.0f, 0.0f);
  return out;
}

ComplexVector mapBits(const BitVector& bits, int modulation) {
  if (modulation < WlanQpsk || modulation > WlanQam256) return mapBpsk(bits);
  const Axis axis = axisOf(modulation);
  const size_t group = static_cast<size_t>(2 * axis.bits);
  ComplexVector out(bits.size() / group);
  for (size_t g = 0; g < out.size(); ++g) {
    const uint8_t* first = bits.data() + g * group;
    const float i = axis.levels[axisValue(first, axis.bits)];
    const float q = axis.levels[axisValue(first + axis.bits, axis.bits)];
    out[g] = Sample(i * axis.scale, q * axis.scale);
  }
  return out;
}
