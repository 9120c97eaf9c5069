// SPDX-License-Identifier: MIT
// The impairment chain's noise record and circular channel filter.
#include "core/impairment_noise.h"

#include "dsp/filter_circular.h"
#include "dsp/vec_arith.h"
#include "dsp/vec_design.h"
#include "dsp/vec_fill.h"
#include "dsp/vec_fir.h"
#include "dsp/vec_random.h"

#include <algorithm>
#include <cmath>

namespace {

double meanPowerDb(const std::vector<Sample>& samples) {
  double sum = 0.0;
  for (const Sample& s : samples)
    sum += static_cast<double>(s.real()) * s.real() + static_cast<double>(s.imag()) * s.imag();
  return 10.0 * std::log10(sum / static_cast<double>(samples.size()));
}

}  // namespace

double ImpairmentNoise::prepare(double signalPowerDb, double sampleRateHz, double snrDb,
                                double bandwidthHz) {
  vecRandGauss32f(reinterpret_cast<float*>(noise.data()), 2 * noiseLength, 0.0f, 1.0f, 0);
  double cutoff = bandwidthHz / sampleRateHz * 0.5;
  // A NaN (no rate) takes the narrowest band, as a bandwidth of 0 does.
  cutoff = std::isnan(cutoff) ? minCutoff : std::clamp(cutoff, minCutoff, maxCutoff);
  const double actualBandwidth = sampleRateHz * 2.0 * cutoff;

  float real[filterTaps];
  designLowpass(real, filterTaps, cutoff, 1, true);
  std::vector<Sample> taps(real, real + filterTaps);
  applyCircularFir(taps, noise.data(), noiseLength);

  const double target = signalPowerDb - snrDb;
  const double scale = std::sqrt(std::pow(10.0, (target - meanPowerDb(noise)) / 10.0));
  if (std::isfinite(scale))
    vecMulC32fcInPlace(static_cast<float>(scale), 0.0f, noise.data(), noiseLength);
  else
    vecZero32fc(noise.data(), noiseLength);
  noiseValid = true;
  return actualBandwidth;
}

void ImpairmentNoise::add(const Sample* in, Sample* out, int count) {
  while (count > 0) {
    const int run = std::min(count, noiseLength - noiseIndex);
    vecAdd32fc(in, noise.data() + noiseIndex, out, run);
    noiseIndex += run;
    if (noiseIndex == noiseLength) noiseIndex = 0;
    in += run;
    out += run;
    count -= run;
  }
}

void applyCircularFir(const std::vector<Sample>& taps, Sample* samples, int length) {
  if (taps.empty() || !samples || length < 1) return;
  const VecStatePtr<VecFir32fc> fir = vecFirCreate32fc(taps.data(), static_cast<int>(taps.size()));
  if (fir) filterCircular(fir.get(), samples, length);
}
