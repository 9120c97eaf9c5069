// SPDX-License-Identifier: MIT
// The noise record of the impairment chain: its power, its band, and the index that wraps.
#include "core/impairment_noise.h"
#include "dsp/vec_fft.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace {

double powerDb(const Sample* samples, int n) {
  double sum = 0.0;
  for (int i = 0; i < n; ++i) sum += std::norm(std::complex<double>(samples[i]));
  return 10.0 * std::log10(sum / n);
}

// Share of the record's power at relative frequencies |f| above `edge`, in dB, from an
// average of Blackman-windowed 1024-point periodograms (a window with low leakage, so that the
// band's power doesn't spill into the stop band).
double powerAboveDb(const std::vector<Sample>& x, double edge) {
  const int n = 1024;
  auto fft = vecFftCreate(10, VecFftNoScale, 0);
  std::vector<Sample> block(n);
  double above = 0.0, total = 0.0;
  for (size_t start = 0; start + n <= x.size(); start += n) {
    for (int i = 0; i < n; ++i) {
      const double c = 2.0 * M_PI * i / n;
      block[i] = x[start + i] * float(0.42 - 0.5 * std::cos(c) + 0.08 * std::cos(2 * c));
    }
    vecFftForward32fc(block.data(), block.data(), fft.get());
    for (int k = 0; k < n; ++k) {
      const double f = (k < n / 2 ? k : k - n) / double(n), p = std::norm(block[k]);
      total += p;
      if (std::abs(f) > edge) above += p;
    }
  }
  return 10.0 * std::log10(above / total);
}

TEST(ImpairmentNoise, PowerBandAndReportedBandwidth) {
  struct Case {
    double signalDb, snrDb, bandwidthHz, rateHz, reportedHz;
  };
  // The cutoff is bandwidth / rate / 2 within 0.01 to 0.4: the reported bandwidth is the one
  // the record really has.
  const Case cases[] = {
      {0.0, 20.0, 1e7, 50e6, 1e7},   {-6.0, 0.0, 1e9, 50e6, 4e7},
      {0.0, 100.0, 100.0, 50e6, 1e6}, {-3.5, 35.0, 0.0, 1e6, 2e4},
      {0.0, 10.0, 5e6, 0.0, 0.0},
  };
  ImpairmentNoise noise;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.bandwidthHz);
    EXPECT_DOUBLE_EQ(noise.prepare(c.signalDb, c.rateHz, c.snrDb, c.bandwidthHz), c.reportedHz);
    EXPECT_NEAR(powerDb(noise.noise.data(), ImpairmentNoise::noiseLength), c.signalDb - c.snrDb,
                0.1);
    // Without a rate any bandwidth is infinitely wide: the widest cutoff.
    const double cutoff = c.rateHz > 0 ? c.reportedHz / c.rateHz / 2 : 0.4;
    // Past the 65 taps' transition band, and flat enough that half the band holds half the power.
    EXPECT_LT(powerAboveDb(noise.noise, cutoff + 0.06), -40.0) << "not band-limited";
    EXPECT_GT(powerAboveDb(noise.noise, cutoff * 0.5), -4.0) << "narrower than asked";
  }
  // Seed 0 each time: the same settings give the same record.
  const std::vector<Sample> last = noise.noise;
  noise.prepare(cases[4].signalDb, cases[4].rateHz, cases[4].snrDb, cases[4].bandwidthHz);
  EXPECT_EQ(noise.noise, last);
}

TEST(ImpairmentNoise, AddsFromAnIndexThatWrapsAndSurvivesRebuilds) {
  ImpairmentNoise noise;
  noise.prepare(0.0, 1e6, 0.0, 1e5);
  const int length = ImpairmentNoise::noiseLength;
  noise.noiseIndex = length - 3;
  noise.prepare(0.0, 1e6, 0.0, 1e5);
  EXPECT_EQ(noise.noiseIndex, length - 3) << "a rebuild doesn't restart the noise";

  std::vector<Sample> in(10, Sample(1.0f, -2.0f)), out(10);
  noise.add(in.data(), out.data(), 10);
  EXPECT_EQ(noise.noiseIndex, 7);
  for (int i = 0; i < 10; ++i)
    EXPECT_EQ(out[i], in[i] + noise.noise[(length - 3 + i) % length]) << i;
  // A chunk that ends exactly at the end of the record leaves the index at its start.
  noise.noiseIndex = length - 10;
  noise.add(in.data(), out.data(), 10);
  EXPECT_EQ(noise.noiseIndex, 0);
}

TEST(ImpairmentNoise, InfinitePowersLeaveSilence) {
  ImpairmentNoise noise;
  noise.prepare(INFINITY, 1e6, 0.0, 1e5);
  for (const Sample& s : noise.noise) ASSERT_EQ(s, Sample(0.0f, 0.0f));
  noise.prepare(-INFINITY, 1e6, 0.0, 1e5);
  for (const Sample& s : noise.noise) ASSERT_TRUE(std::isfinite(s.real()) && s.real() == 0.0f);
}

}  // namespace
