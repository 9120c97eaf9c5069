// SPDX-License-Identifier: MIT
// Pulse-shaping designs of the modulated modes, and the tap spectrum of the filter editors.
#include "digital/filter_designs.h"

#include "dsp/vec_fft.h"
#include "dsp/vec_status.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kPi = 3.14159265358979323846;

// Stores taps / (their sum) as float; a zero sum stores them as they are.
void storeNormalised(float* h, const double* taps, int n) {
  double sum = 0.0;
  for (int k = 0; k < n; ++k) sum += taps[k];
  const double scale = sum != 0.0 ? 1.0 / sum : 1.0;
  for (int k = 0; k < n; ++k) h[k] = static_cast<float>(taps[k] * scale);
}

// Convolves `shape` (n - sps + 1 values) with sps ones and stores the n results normalised.
void storeWithSymbolRectangle(float* h, int n, const std::vector<double>& shape, int sps) {
  const std::vector<double> ones(static_cast<size_t>(sps), 1.0);
  std::vector<double> taps(static_cast<size_t>(n));
  vecConvolve64f(shape.data(), static_cast<int>(shape.size()), ones.data(), sps, taps.data());
  storeNormalised(h, taps.data(), n);
}

bool writable(const float* h, int n, int sps) { return h && n >= 1 && sps >= 1; }

}  // namespace

void designRootRaisedCosine(float* h, int n, double beta, int sps) {
  if (!writable(h, n, sps)) return;
  const int half = n / 2;
  std::vector<double> taps(static_cast<size_t>(n), 0.0);
  for (int i = -half; i <= half; ++i) {
    const int index = half + i;
    if (index >= n) break;  // even n: i = n / 2 would land one beyond the buffer
    const double t = static_cast<double>(i) / sps;
    double value;
    if (i == 0) {
      value = 1.0 - beta + 4.0 * beta / kPi;
    } else if (std::fabs(t) == 1.0 / (4.0 * beta)) {
      const double u = kPi / (4.0 * beta);
      value = (1.6366197723675815 * std::sin(u) + 0.3633802276324186 * std::cos(u)) * beta /
              std::sqrt(2.0);
    } else {
      const double fourBetaT = 4.0 * beta * t;
      value = (std::cos((1.0 + beta) * kPi * t) * fourBetaT + std::sin((1.0 - beta) * kPi * t)) /
              ((1.0 - fourBetaT * fourBetaT) * kPi * t);
    }
    taps[static_cast<size_t>(index)] = value;
  }
  storeNormalised(h, taps.data(), n);
}

void designRaisedCosine(float* h, int n, double beta, int sps) {
  if (!writable(h, n, sps)) return;
  const double a = beta / sps;
  const int m = (n - 1) / 2;
  std::vector<double> taps(static_cast<size_t>(n), 0.0);  // even n: the last tap stays 0
  for (int i = -m; i < (n + 1) / 2; ++i) {
    double x = i;
    if (i == 0) x += 1e-7;
    // One test after the other, each on the x the one before left.
    for (const double singular : {0.25, 0.5, -0.25, -0.5})
      if (x * a == singular) x += 1e-6;
    const double u = x * a;
    const double y = x * kPi / sps;
    const double sinc = i == 0 ? 1.0 : std::sin(y) / y;
    taps[static_cast<size_t>(i + m)] = std::cos(u * kPi) * sinc / (1.0 - 4.0 * u * u);
  }
  storeNormalised(h, taps.data(), n);
}

void designGaussian(float* h, int n, double bt, int sps) {
  if (!writable(h, n, sps)) return;
  const int g = n - sps + 1;
  if (g < 1) {
    std::fill(h, h + n, 0.0f);
    return;
  }
  const double alpha = (std::sqrt(std::log(2.0)) / std::sqrt(2.0)) * (sps / bt);
  std::vector<double> pulse(static_cast<size_t>(g));
  for (int i = 0; i < g; ++i) {
    const double z = (i - (g - 1) * 0.5) * kPi / alpha;
    pulse[static_cast<size_t>(i)] = (std::sqrt(kPi) / alpha) * std::exp(-z * z);
  }
  storeWithSymbolRectangle(h, n, pulse, sps);
}

void designRectangular(float* h, int n, double cutoff, int sps) {
  if (!writable(h, n, sps)) return;
  const int g = n - sps + 1;
  if (g < 1) {
    std::fill(h, h + n, 0.0f);
    return;
  }
  // The low-pass taps are rounded to float before the convolution, as designLowpass stores them.
  std::vector<float> lowpass(static_cast<size_t>(g));
  designLowpass(lowpass.data(), g, cutoff, VecWindowHamming, true);
  storeWithSymbolRectangle(h, n, std::vector<double>(lowpass.begin(), lowpass.end()), sps);
}

void designHalfSine(float* h, int n, int sps) {
  if (!writable(h, n, sps)) return;
  const int shape = std::min(n, sps);
  for (int i = 0; i < n; ++i)
    h[i] = i < shape ? static_cast<float>(std::sin((static_cast<double>(i) / sps) * kPi)) : 0.0f;
}

std::vector<float> tapSpectrumDb(const Sample* taps, int n) {
  std::vector<Sample> bins(tapSpectrumSize, Sample(0.0f, 0.0f));
  if (taps && n > 0) std::copy(taps, taps + std::min(n, tapSpectrumSize), bins.begin());
  const auto fft = vecFftCreate(10, VecFftNoScale, VecHintAccurate);
  if (fft) vecFftForward32fc(bins.data(), bins.data(), fft.get());
  std::vector<float> power(tapSpectrumSize);
  for (int k = 0; k < tapSpectrumSize; ++k)
    power[static_cast<size_t>(k)] = 10.0f * std::log10(std::norm(bins[k]) + 1e-7f);
  return power;
}

std::vector<float> tapSpectrumDb(const float* taps, int n) {
  std::vector<Sample> complexTaps;
  if (taps && n > 0) complexTaps.assign(taps, taps + std::min(n, tapSpectrumSize));
  return tapSpectrumDb(complexTaps.data(), static_cast<int>(complexTaps.size()));
}
