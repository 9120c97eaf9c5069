// SPDX-License-Identifier: MIT
// Band-limited white Gaussian noise: a seeded record, filtered so that its end joins its start.
#include "modes/awgn/awgn_builder.h"

#include "dsp/noise_record.h"
#include "dsp/vec_design.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace {

// Relative cutoff of the noise filter: half the bandwidth at 1.25 × the bandwidth.
constexpr double cutoff = 0.4;

}  // namespace

LongWaveform buildAwgn(const AwgnSettings& settings) {
  LongWaveform wave;
  const double rate = settings.bandwidthHz * awgnRateFactor;
  const double count = settings.lengthS * rate;
  // The views bound the record to 1e7 samples; anything else is no record at all.
  if (!(rate > 0.0) || !(count < 1e9)) return wave;
  const int64_t length = std::max<int64_t>(static_cast<int64_t>(count), awgnFilterTaps);

  wave.samples = SampleBuffer(length);
  float real[awgnFilterTaps];
  designLowpass(real, awgnFilterTaps, cutoff, 1, true);
  double meanPowerDb = 0.0;
  // I and Q each of variance 0.707, the deviation's square root taken in double; the record
  // is divided by its peak, which sets its mean power.
  makeFilteredNoise(wave.samples.data(), length, std::vector<Sample>(real, real + awgnFilterTaps),
                    static_cast<float>(std::sqrt(0.707)), static_cast<unsigned int>(settings.seed),
                    [&](float peak, double sumOfSquares) {
                      const double divisor = peak > 0.0f ? peak : 1.0;
                      meanPowerDb = 10.0 * std::log10(sumOfSquares / static_cast<double>(length) /
                                                      (divisor * divisor));
                      return divisor;
                    });
  wave.sampleRate = rate;
  wave.levelOffsetDb = meanPowerDb;
  return wave;
}
