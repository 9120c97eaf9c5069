// SPDX-License-Identifier: MIT
// Filter designs against their formulas, edge cases and spectral masks; the tap spectrum.
#include "digital/filter_designs.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <numeric>
#include <string>
#include <vector>

namespace {

constexpr double kPi = 3.14159265358979323846;

using Design = std::function<void(float*, int)>;

// Runs a design into a buffer one longer than n, whose last value must survive.
std::vector<float> run(const Design& design, int n) {
  std::vector<float> h(static_cast<size_t>(n) + 1, 12345.0f);
  design(h.data(), n);
  EXPECT_EQ(h[static_cast<size_t>(n)], 12345.0f) << "written beyond n = " << n;
  h.pop_back();
  return h;
}

double sum(const std::vector<float>& h) { return std::accumulate(h.begin(), h.end(), 0.0); }

// The RRC value at t = i / sps, away from the special points.
double rrcAt(double t, double beta) {
  return (std::cos((1 + beta) * kPi * t) * 4 * beta * t + std::sin((1 - beta) * kPi * t)) /
         ((1 - 16 * beta * beta * t * t) * kPi * t);
}

TEST(FilterDesigns, RootRaisedCosineSpecialBranchAndRatios) {
  // beta 0.25, sps 4: at i = 4, |t| = 1 = 1 / (4 beta).
  const std::vector<float> h =
      run([](float* p, int n) { designRootRaisedCosine(p, n, 0.25, 4); }, 33);
  const double centre = 1 - 0.25 + 1 / kPi;
  const double special =
      ((1 + 2 / kPi) * std::sin(kPi) + (1 - 2 / kPi) * std::cos(kPi)) * 0.25 / std::sqrt(2.0);
  ASSERT_TRUE(std::isfinite(h[20]));
  EXPECT_NEAR(h[20] / h[16], special / centre, 1e-6);
  EXPECT_NEAR(h[12] / h[16], special / centre, 1e-6);
  EXPECT_NEAR(h[17] / h[16], rrcAt(0.25, 0.25) / centre, 1e-6);
  EXPECT_NEAR(h[0] / h[16], rrcAt(-4.0, 0.25) / centre, 1e-6);
  // The special branch is the limit of the general formula.
  EXPECT_NEAR(special, rrcAt(1.0 + 1e-7, 0.25), 1e-6);
}

TEST(FilterDesigns, RaisedCosineStepsOverSingularPoints) {
  // beta 0.5, sps 4, i = 2 gives x a = 0.25, and x becomes 2.000001.
  const std::vector<float> h = run([](float* p, int n) { designRaisedCosine(p, n, 0.5, 4); }, 33);
  const double y = 2.000001 * kPi / 4, u = 2.000001 * 0.125;
  ASSERT_TRUE(std::isfinite(h[18]));
  EXPECT_NEAR(h[18] / h[16], std::cos(u * kPi) * std::sin(y) / y / (1 - 4 * u * u), 1e-6);
  // A true zero of the denominator: beta 0.75, sps 6, i = 4 gives x a = 0.5; the tap is the
  // limit (pi / 4) sinc(2 pi / 3) relative to the centre.
  const std::vector<float> g = run([](float* p, int n) { designRaisedCosine(p, n, 0.75, 6); }, 49);
  ASSERT_TRUE(std::isfinite(g[28]));
  EXPECT_NEAR(g[28] / g[24], kPi / 4 * std::sin(2 * kPi / 3) / (2 * kPi / 3), 1e-5);
  EXPECT_NEAR(g[20] / g[24], g[28] / g[24], 1e-5);
}

TEST(FilterDesigns, HalfSineIsOneSymbolOfASine) {
  const std::vector<float> h = run([](float* p, int n) { designHalfSine(p, n, 4); }, 33);
  const float expected[] = {0.0f, static_cast<float>(std::sin(kPi / 4)), 1.0f,
                            static_cast<float>(std::sin(3 * kPi / 4))};
  for (int i = 0; i < 4; ++i) EXPECT_FLOAT_EQ(h[i], expected[i]) << i;
  for (int i = 4; i < 33; ++i) EXPECT_EQ(h[i], 0.0f) << i;
  // Fewer taps than a symbol: the sine is cut.
  const std::vector<float> cut = run([](float* p, int n) { designHalfSine(p, n, 8); }, 3);
  EXPECT_FLOAT_EQ(cut[2], static_cast<float>(std::sin(kPi / 4)));
}

TEST(FilterDesigns, GaussianIsAPulseOfNMinusSpsPlusOneSamplesTimesASymbol) {
  // 33 taps at sps 4, bt 0.5: g = 30, and the taps are p convolved with four ones.
  const std::vector<float> h = run([](float* p, int n) { designGaussian(p, n, 0.5, 4); }, 33);
  const int g = 30;
  const double alpha = std::sqrt(std::log(2.0)) / std::sqrt(2.0) * (4 / 0.5);
  std::vector<double> p(g);
  for (int i = 0; i < g; ++i)
    p[i] = std::sqrt(kPi) / alpha * std::exp(-std::pow((i - (g - 1) * 0.5) * kPi / alpha, 2));
  const double total = 4 * std::accumulate(p.begin(), p.end(), 0.0);
  for (int k : {12, 14, 15, 16}) {
    double expected = 0;
    for (int j = 0; j < 4; ++j) expected += p[k - j];
    EXPECT_NEAR(h[k], expected / total, 1e-7) << k;
  }
  // Fewer taps than a symbol leave zeros.
  const std::vector<float> none = run([](float* q, int n) { designGaussian(q, n, 0.5, 8); }, 4);
  EXPECT_EQ(sum(none), 0.0);
}

TEST(FilterDesigns, RectangularAtTwoSamplesTakesCutoff049) {
  // sps 2, cutoff 0.5: a Hamming low-pass of 9 taps at 0.49 (stored as float), then [1, 1].
  const std::vector<float> h = run([](float* p, int n) { designRectangular(p, n, 0.5, 2); }, 10);
  const double cutoff = 0.49f;
  std::vector<double> lowpass(9);
  double lowSum = 0;
  for (int k = 0; k < 9; ++k) {
    const double t = k - 4.0;
    const double sinc = t == 0 ? 2 * cutoff : std::sin(2 * kPi * cutoff * t) / (kPi * t);
    lowpass[k] = sinc * (0.54 - 0.46 * std::cos(2 * kPi * k / 8));
    lowSum += lowpass[k];
  }
  std::vector<double> taps(10, 0.0);
  for (int k = 0; k < 9; ++k) {
    const double stored = static_cast<float>(lowpass[k] / lowSum);
    taps[k] += stored;
    taps[k + 1] += stored;
  }
  const double total = std::accumulate(taps.begin(), taps.end(), 0.0);
  for (int k = 0; k < 10; ++k) EXPECT_NEAR(h[k], taps[k] / total, 1e-7) << k;
}

// Even counts: the RRC drops the value its loop would put at index n; the RC's loop covers
// n - 1 taps and leaves the last at 0. run() checks that nothing lands beyond n.
TEST(FilterDesigns, EvenCountsStayInsideTheBuffer) {
  const std::vector<float> rrc =
      run([](float* p, int n) { designRootRaisedCosine(p, n, 0.35, 4); }, 32);
  EXPECT_NEAR(sum(rrc), 1.0, 1e-6);
  EXPECT_NEAR(rrc[16] / rrc[0], (1 - 0.35 + 1.4 / kPi) / rrcAt(-4.0, 0.35), 1e-5);
  const std::vector<float> rc = run([](float* p, int n) { designRaisedCosine(p, n, 0.35, 4); }, 32);
  EXPECT_EQ(rc[31], 0.0f);
  EXPECT_NEAR(sum(rc), 1.0, 1e-6);
  for (int n : {0, 1, 2}) {
    run([](float* p, int m) { designRootRaisedCosine(p, m, 0.35, 4); }, n);
    run([](float* p, int m) { designGaussian(p, m, 0.5, 4); }, n);
    run([](float* p, int m) { designRectangular(p, m, 0.25, 4); }, n);
  }
}

// Power in dB of the taps at frequency f (cycles per sample), from the 1024-point spectrum.
double powerDb(const std::vector<float>& spectrum, double f) {
  return spectrum[static_cast<size_t>(std::lround(f * tapSpectrumSize))];
}

// Each normalised family: odd counts mirror, taps sum to 1, and the spectrum of the taps keeps
// its pass band and stop band.
TEST(FilterDesigns, NormalisedFamiliesMirrorSumToOneAndMeetTheirMasks) {
  const struct {
    const char* name;
    Design design;
    int n;
    double passEdge;    // |H| within passRipple dB of DC up to here
    double passRipple;  // dB
    double stopEdge;    // and below stopDb from here to 0.5
    double stopDb;
  } cases[] = {
      // Digital mode's counts: os x 8 + 1. RRC 0.35 at sps 8: pass to 0.65 / 16, stop past 1.35
      // / 16.
      {"rrc", [](float* p, int n) { designRootRaisedCosine(p, n, 0.35, 8); }, 65, 0.035, 0.3, 0.1,
       -35},
      {"rc", [](float* p, int n) { designRaisedCosine(p, n, 0.35, 4); }, 33, 0.07, 0.2, 0.2, -45},
      {"gaussian", [](float* p, int n) { designGaussian(p, n, 0.5, 4); }, 33, 0.03, 0.5, 0.3, -30},
      {"rect", [](float* p, int n) { designRectangular(p, n, 0.25, 4); }, 33, 0.03, 0.3, 0.25, -30},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::vector<float> h = run(c.design, c.n);
    EXPECT_NEAR(sum(h), 1.0, 1e-6);
    for (int k = 0; k < c.n / 2; ++k) EXPECT_NEAR(h[k], h[c.n - 1 - k], 1e-7) << k;
    const std::vector<float> spectrum = tapSpectrumDb(h.data(), c.n);
    EXPECT_NEAR(powerDb(spectrum, 0.0), 0.0, 1e-4);
    double worstPass = 0, worstStop = -1000;
    for (int k = 0; k <= tapSpectrumSize / 2; ++k) {
      const double f = static_cast<double>(k) / tapSpectrumSize;
      if (f <= c.passEdge) worstPass = std::max(worstPass, std::fabs(powerDb(spectrum, f)));
      if (f >= c.stopEdge) worstStop = std::max(worstStop, powerDb(spectrum, f));
    }
    EXPECT_LE(worstPass, c.passRipple);
    EXPECT_LE(worstStop, c.stopDb);
  }
}

TEST(TapSpectrum, PowerOfKnownTaps) {
  const float one = 10 * std::log10(1 + 1e-7f);
  const struct {
    const char* name;
    std::vector<Sample> taps;
    std::vector<std::pair<int, double>> bins;  // bin, dB
  } cases[] = {
      {"impulse", {{1, 0}}, {{0, one}, {300, one}, {1023, one}}},
      {"two ones",
       {{1, 0}, {1, 0}},
       {{0, 10 * std::log10(4.0)}, {256, 10 * std::log10(2.0)}, {512, -70}}},
      {"imaginary", {{0, 0}, {0, 2}}, {{0, 10 * std::log10(4.0)}, {700, 10 * std::log10(4.0)}}},
      {"none", {}, {{0, -70}, {511, -70}}},
  };
  for (const auto& c : cases) {
    const std::vector<float> power = tapSpectrumDb(c.taps.data(), static_cast<int>(c.taps.size()));
    ASSERT_EQ(power.size(), 1024u);
    for (const auto& [bin, db] : c.bins) EXPECT_NEAR(power[bin], db, 1e-4) << c.name << " " << bin;
  }
  // A tone at +100 bins lands at bin 100 (forward transform), and taps beyond 1024 are cut.
  std::vector<Sample> tone(1500);
  for (int k = 0; k < 1024; ++k)
    tone[k] = std::polar(1.0f, static_cast<float>(2 * kPi * 100 * k / 1024));
  for (int k = 1024; k < 1500; ++k) tone[k] = Sample(100, 0);
  const std::vector<float> power = tapSpectrumDb(tone.data(), 1500);
  EXPECT_NEAR(power[100], 20 * std::log10(1024.0), 1e-3);
  EXPECT_LT(power[924], -20);
  EXPECT_LT(power[0], -20);
  // Real taps give the same as their complex form.
  const float real[] = {0.25f, -0.5f, 1.0f};
  const Sample complex[] = {{0.25f, 0}, {-0.5f, 0}, {1.0f, 0}};
  EXPECT_EQ(tapSpectrumDb(real, 3), tapSpectrumDb(complex, 3));
}

}  // namespace
