// SPDX-License-Identifier: MIT
// Band-limited white Gaussian noise: a seeded record, filtered so that its end joins its start.
#include "modes/awgn/awgn_builder.h"

#include "dsp/filter_circular.h"
#include "dsp/vec_arith.h"
#include "dsp/vec_design.h"
#include "dsp/vec_fir.h"
#include "dsp/vec_random.h"

#include <algorithm>
#include <cmath>

namespace {

// Relative cutoff of the noise filter: half the bandwidth at 1.25 × the bandwidth.
constexpr double cutoff = 0.4;
// The record's samples before the filter: I and Q each of variance 0.707.
const float noiseStdDev = static_cast<float>(std::sqrt(0.707));

void lowPass(Sample* samples, int64_t length) {
  float real[awgnFilterTaps];
  designLowpass(real, awgnFilterTaps, cutoff, 1, true);
  Sample taps[awgnFilterTaps];
  for (int k = 0; k < awgnFilterTaps; ++k) taps[k] = Sample(real[k], 0.0f);
  const VecStatePtr<VecFir32fc> fir = vecFirCreate32fc(taps, awgnFilterTaps);
  filterCircular(fir.get(), samples, static_cast<int>(length));
}

float peakMagnitude(const Sample* samples, int64_t length) {
  float peak = 0.0f;
  for (int64_t i = 0; i < length; ++i) {
    const float re = samples[i].real(), im = samples[i].imag();
    const float magnitude = std::sqrt(re * re + im * im);
    if (magnitude > peak) peak = magnitude;
  }
  return peak;
}

double meanPowerDb(const Sample* samples, int64_t length) {
  double sum = 0.0;
  for (int64_t i = 0; i < length; ++i) sum += std::norm(std::complex<double>(samples[i]));
  return 10.0 * std::log10(sum / static_cast<double>(length));
}

}  // namespace

LongWaveform buildAwgn(const AwgnSettings& settings) {
  LongWaveform wave;
  const double rate = settings.bandwidthHz * awgnRateFactor;
  const double count = settings.lengthS * rate;
  // The views bound the record to 1e7 samples; anything else is no record at all.
  if (!(rate > 0.0) || !(count < 1e9)) return wave;
  const int64_t length = std::max<int64_t>(static_cast<int64_t>(count), awgnFilterTaps);

  wave.samples = SampleBuffer(length);
  Sample* samples = wave.samples.data();
  vecRandGauss32f(reinterpret_cast<float*>(samples), static_cast<int>(2 * length), 0.0f,
                  noiseStdDev, static_cast<unsigned int>(settings.seed));
  lowPass(samples, length);
  const float peak = peakMagnitude(samples, length);
  if (peak > 0.0f)
    vecDivC32f(reinterpret_cast<const float*>(samples), peak, reinterpret_cast<float*>(samples),
               static_cast<int>(2 * length));
  wave.sampleRate = rate;
  wave.levelOffsetDb = meanPowerDb(samples, length);
  return wave;
}
