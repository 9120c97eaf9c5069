// SPDX-License-Identifier: MIT
// The 64-point inverse FFT of a WLAN frame build, guard intervals and symbol assembly.
#include "wireless/ofdm_symbol.h"

#include "dsp/vec_status.h"
#include "wireless/subcarrier_placement.h"

#include <algorithm>

WlanFft::WlanFft()
    : fft(vecFftCreate(6, VecFftDivInvByN, VecHintAccurate)),
      bins(vecAllocArray<Sample>(wlanFftSize)) {}

void WlanFft::inverseFft64(const Sample* freq, Sample* time) {
  const int half = wlanFftSize / 2;
  std::copy(freq + half, freq + wlanFftSize, bins.get());
  std::copy(freq, freq + half, bins.get() + half);
  if (!fft) {
    std::fill(time, time + wlanFftSize, Sample(0.0f, 0.0f));
    return;
  }
  vecFftInverse32fc(bins.get(), time, fft.get());
}

void appendWithGuard(ComplexVector& frame, const Sample* time, int n, int guard) {
  guard = std::clamp(guard, 0, n);
  frame.insert(frame.end(), time + n - guard, time + n);
  frame.insert(frame.end(), time, time + n);
}

ComplexVector addCyclicPrefix(const ComplexVector& time) {
  ComplexVector out;
  const int n = static_cast<int>(time.size());
  out.reserve(static_cast<size_t>(n + n / 4));
  appendWithGuard(out, time.data(), n, n / 4);
  return out;
}

void appendSymbol(ComplexVector& frame, const ComplexVector& freq, WlanFft& fft, bool shortGuard) {
  Sample time[wlanFftSize];
  ComplexVector padded;
  const Sample* entries = freq.data();
  if (freq.size() < static_cast<size_t>(wlanFftSize)) {
    padded = freq;
    padded.resize(wlanFftSize, Sample(0.0f, 0.0f));
    entries = padded.data();
  }
  fft.inverseFft64(entries, time);
  appendWithGuard(frame, time, wlanFftSize, shortGuard ? 8 : 16);
}
