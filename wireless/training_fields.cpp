// SPDX-License-Identifier: MIT
// Time samples of the legacy and HT short and long training fields.
#include "wireless/training_fields.h"

#include "wireless/subcarrier_placement.h"

#include <cmath>

namespace {

// The short training sequence without its factor: (1+j) or (-1-j) at every fourth subcarrier.
ComplexVector stfTable(double scale) {
  static const int kK[12] = {-24, -20, -16, -12, -8, -4, 4, 8, 12, 16, 20, 24};
  static const int kSign[12] = {1, -1, 1, -1, -1, 1, -1, -1, 1, 1, 1, 1};
  ComplexVector freq(wlanFftSize, Sample(0.0f, 0.0f));
  const float v = static_cast<float>(scale);
  for (int i = 0; i < 12; ++i) freq[kK[i] + wlanDcIndex] = Sample(kSign[i] * v, kSign[i] * v);
  return freq;
}

// The long training sequence on k = -26 .. 26; the HT one adds +1, +1 below and -1, -1 above.
ComplexVector ltfTable(bool ht) {
  static const int kLegacy[53] = {1, 1, -1, -1, 1, 1, -1, 1, -1, 1, 1, 1, 1, 1, 1, -1, -1, 1,
                                  1, -1, 1, -1, 1, 1, 1, 1, 0, 1, -1, -1, 1, 1, -1, 1, -1, 1,
                                  -1, -1, -1, -1, -1, 1, 1, -1, -1, 1, -1, 1, -1, 1, 1, 1, 1};
  ComplexVector freq(wlanFftSize, Sample(0.0f, 0.0f));
  for (int i = 0; i < 53; ++i) freq[i - 26 + wlanDcIndex] = Sample(float(kLegacy[i]), 0.0f);
  if (ht) {
    freq[-28 + wlanDcIndex] = freq[-27 + wlanDcIndex] = Sample(1.0f, 0.0f);
    freq[27 + wlanDcIndex] = freq[28 + wlanDcIndex] = Sample(-1.0f, 0.0f);
  }
  return freq;
}

ComplexVector timeOf(const ComplexVector& freq, WlanFft& fft) {
  ComplexVector x(wlanFftSize);
  fft.inverseFft64(freq.data(), x.data());
  return x;
}

}  // namespace

ComplexVector legacyStf(WlanFft& fft) {
  const ComplexVector x = timeOf(stfTable(std::sqrt(13.0 / 6.0)), fft);
  ComplexVector out;
  out.reserve(160);
  appendWithGuard(out, x.data(), wlanFftSize, 16);
  appendWithGuard(out, x.data(), wlanFftSize, 16);
  return out;
}

ComplexVector legacyLtf(WlanFft& fft) {
  const ComplexVector x = timeOf(ltfTable(false), fft);
  ComplexVector out;
  out.reserve(160);
  appendWithGuard(out, x.data(), wlanFftSize, 32);
  out.insert(out.end(), x.begin(), x.end());
  return out;
}

ComplexVector htStf(WlanFft& fft) {
  return addCyclicPrefix(timeOf(stfTable(std::sqrt(0.5)), fft));
}

ComplexVector htLtf(WlanFft& fft) {
  return addCyclicPrefix(timeOf(ltfTable(true), fft));
}

void appendFields(ComplexVector& frame, WlanFft& fft,
                  std::initializer_list<ComplexVector (*)(WlanFft&)> fields) {
  for (auto* field : fields) {
    const ComplexVector samples = field(fft);
    frame.insert(frame.end(), samples.begin(), samples.end());
  }
}
