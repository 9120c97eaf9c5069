// SPDX-License-Identifier: MIT
// The impairment chain's noise record and circular channel filter.
#include "core/impairment_noise.h"

#include "dsp/filter_circular.h"
#include "dsp/noise_record.h"
#include "dsp/vec_arith.h"
#include "dsp/vec_design.h"
#include "dsp/vec_fir.h"

#include <algorithm>
#include <cmath>

double ImpairmentNoise::prepare(double signalPowerDb, double sampleRateHz, double snrDb,
                                double bandwidthHz) {
  double cutoff = bandwidthHz / sampleRateHz * 0.5;
  // A NaN (no rate) takes the narrowest band, as a bandwidth of 0 does.
  cutoff = std::isnan(cutoff) ? minCutoff : std::clamp(cutoff, minCutoff, maxCutoff);
  const double actualBandwidth = sampleRateHz * 2.0 * cutoff;

  float real[filterTaps];
  designLowpass(real, filterTaps, cutoff, 1, true);
  const double target = signalPowerDb - snrDb;
  // Seed 0: every build starts from the same noise. A scale that can't be a number leaves
  // zeros (a division by infinity).
  makeFilteredNoise(noise.data(), noiseLength, std::vector<Sample>(real, real + filterTaps), 1.0f,
                    0, [&](float, double sumOfSquares) {
                      const double measured = 10.0 * std::log10(sumOfSquares / noiseLength);
                      const double scale = std::sqrt(std::pow(10.0, (target - measured) / 10.0));
                      return std::isfinite(scale) && scale > 0.0 ? 1.0 / scale : INFINITY;
                    });
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
