// SPDX-License-Identifier: MIT
// FIR objects against the plain convolution sum, and the low-pass design and convolution.
#include "dsp/vec_design.h"
#include "dsp/vec_fir.h"
#include "dsp/vec_reference.h"
#include "dsp/vec_status.h"
#include "dsp_test_data.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <numeric>

namespace {

constexpr VecFirMethod kMethods[] = {VecFirMethod::Auto, VecFirMethod::Direct, VecFirMethod::Fft};

// Every path, with complex taps, real taps held as complex (a path of its own) and real data.
TEST(VecFir, MatchesConvolutionSumOnEveryPath) {
  for (int taps : {1, 2, 5, 15, 64, 65, 200, 1023})
    for (VecFirMethod method : kMethods)
      for (int n : {1, 7, 1001, 5003}) {
        std::vector<Sample> h = randomSamples(taps, taps), hReal = h;
        for (Sample& t : hReal) t = Sample(t.real(), 0.0f);
        const std::vector<Sample> x = randomSamples(n, n);
        for (const auto& tapSet : {h, hReal}) {
          std::vector<Sample> expected(n), got(n);
          vecref::fir32fc(tapSet.data(), taps, x.data(), expected.data(), n);
          Placed<Sample> src(n, 1), dst(n, 3);
          std::copy(x.begin(), x.end(), src.get());
          auto fir = vecFirCreate32fc(tapSet.data(), taps, method);
          ASSERT_EQ(fir->length(), taps);
          ASSERT_EQ(vecFirApply32fc(fir.get(), src.get(), dst.get(), n), VecOk);
          std::copy(dst.get(), dst.get() + n, got.begin());
          EXPECT_LT(worstError(got, expected), 1e-6 + 1e-7 * taps)
              << taps << " " << static_cast<int>(method) << " " << n;
        }
        std::vector<float> hr(taps), xr(n), expected(n), got(n);
        std::transform(h.begin(), h.end(), hr.begin(), [](Sample v) { return v.imag(); });
        std::transform(x.begin(), x.end(), xr.begin(), [](Sample v) { return v.real(); });
        vecref::fir32f(hr.data(), taps, xr.data(), expected.data(), n);
        auto fir = vecFirCreate32f(hr.data(), taps, method);
        vecFirApply32f(fir.get(), xr.data(), got.data(), n);
        EXPECT_LT(worstError(got, expected), 1e-6 + 1e-7 * taps)
            << "real " << taps << " " << static_cast<int>(method);
      }
}

// The delay line carries over, so consecutive calls over pieces equal one call over the whole;
// the pieces are in place, as the circular filter uses them.
TEST(VecFir, DelayLinePersistsAcrossSplitCalls) {
  const int n = 20000;
  const int cuts[] = {0, 1, 2, 66, 1000, 1001, 9000, 19999, n};
  for (int taps : {15, 65, 257})
    for (VecFirMethod method : kMethods) {
      const std::vector<Sample> h = randomSamples(taps, 3), x = randomSamples(n, 4);
      std::vector<Sample> whole(n), pieces = x;
      auto one = vecFirCreate32fc(h.data(), taps, method);
      auto split = vecFirCreate32fc(h.data(), taps, method);
      vecFirApply32fc(one.get(), x.data(), whole.data(), n);
      for (size_t i = 0; i + 1 < std::size(cuts); ++i)
        if (cuts[i + 1] > cuts[i])
          vecFirApply32fc(split.get(), pieces.data() + cuts[i], pieces.data() + cuts[i],
                          cuts[i + 1] - cuts[i]);
      const bool directOnly =
          method == VecFirMethod::Direct || (method == VecFirMethod::Auto && taps < 32);
      if (directOnly)
        EXPECT_EQ(pieces, whole) << taps;  // the same sums in the same order
      else
        EXPECT_LT(worstError(pieces, whole), 2e-6 * std::sqrt(taps))
            << taps << " " << static_cast<int>(method);
    }
}

TEST(VecFir, RefusesEmptyFilters) {
  const Sample tap(1.0f, 0.0f);
  EXPECT_FALSE(vecFirCreate32fc(&tap, 0));
  EXPECT_FALSE(vecFirCreate32f(nullptr, 3));
}

// Frequency response of real taps at f cycles per sample.
double gainAt(const std::vector<double>& h, double f) {
  std::complex<double> sum = 0;
  for (size_t k = 0; k < h.size(); ++k) sum += h[k] * std::polar(1.0, -2.0 * M_PI * f * k);
  return std::abs(sum);
}

struct LowpassCase {
  int length, window;
  double cutoff, stopbandDb, transition;  // stopband: worst gain from cutoff + transition to 0.5
};

TEST(VecDesignLowpass, SymmetricUnitDcGainAndStopband) {
  const LowpassCase cases[] = {{65, VecWindowBlackman, 0.4, -70, 0.05},
                               {65, VecWindowHamming, 0.1, -50, 0.04},
                               {64, VecWindowHamming, 0.25, -50, 0.04},
                               {101, VecWindowKaiser, 0.2, -75, 0.05},
                               {33, VecWindowHann, 0.125, -40, 0.08}};
  for (const LowpassCase& c : cases) {
    std::vector<double> h(c.length);
    ASSERT_EQ(vecDesignLowpass(c.cutoff, h.data(), c.length, c.window, true), VecOk);
    EXPECT_NEAR(std::accumulate(h.begin(), h.end(), 0.0), 1.0, 1e-12);
    for (int k = 0; k < c.length; ++k) ASSERT_NEAR(h[k], h[c.length - 1 - k], 1e-15);
    EXPECT_NEAR(20 * std::log10(gainAt(h, c.cutoff)), -6.0, 0.6)
        << c.length;  // half amplitude at cutoff
    for (double f = c.cutoff + c.transition; f <= 0.5; f += 0.001)
      ASSERT_LT(20 * std::log10(gainAt(h, f)), c.stopbandDb) << c.length << " at " << f;
  }
}

TEST(VecDesignLowpass, UnnormalisedKeepsSincHeightAndBadCutoffsAreRefused) {
  std::vector<double> h(65, -1.0);
  vecDesignLowpass(0.2, h.data(), 65, VecWindowRectangular, false);
  EXPECT_DOUBLE_EQ(h[32], 0.4);
  EXPECT_NEAR(h[31], std::sin(2 * M_PI * 0.2) / M_PI, 1e-15);
  std::vector<double> untouched(5, -1.0);
  for (double cutoff : {0.0, 0.5, -0.1, 0.7})
    EXPECT_EQ(vecDesignLowpass(cutoff, untouched.data(), 5, VecWindowHamming, true), VecErrRange);
  EXPECT_EQ(vecDesignLowpass(0.1, untouched.data(), 5, 9, true), VecErrRange);
  for (double v : untouched) EXPECT_EQ(v, -1.0);
}

TEST(VecConvolve64f, FullLinearConvolution) {
  const double a[] = {1, 2, 3}, b[] = {1, -1, 0.5, 2};
  double dst[6];
  ASSERT_EQ(vecConvolve64f(a, 3, b, 4, dst), VecOk);
  const double expected[] = {1, 1, 1.5, 0, 5.5, 6};
  for (int k = 0; k < 6; ++k) EXPECT_DOUBLE_EQ(dst[k], expected[k]);
}

}  // namespace
