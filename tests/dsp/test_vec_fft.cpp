// SPDX-License-Identifier: MIT
// FFT objects: against a direct DFT, known tone bins, scaling flags and round trips.
#include "dsp/vec_fft.h"
#include "dsp/vec_fir.h"
#include "dsp/vec_status.h"
#include "dsp_test_data.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <thread>

namespace {

std::vector<Sample> directDft(const std::vector<Sample>& x, int sign) {
  const int n = static_cast<int>(x.size());
  std::vector<Sample> out(n);
  for (int k = 0; k < n; ++k) {
    std::complex<double> sum = 0;
    for (int t = 0; t < n; ++t)
      sum += std::complex<double>(x[t]) *
             std::polar(1.0, sign * 2.0 * M_PI * ((static_cast<long long>(k) * t) % n) / n);
    out[k] = Sample(sum);
  }
  return out;
}

struct ScaleCase {
  int flags;
  double forwardPower, inversePower;  // each direction is scaled by N to this power
};

TEST(VecFft, MatchesDirectDftWithEachScalingInAndOutOfPlace) {
  for (int order : {0, 1, 3, 6, 10})
    for (const ScaleCase& s :
         {ScaleCase{VecFftNoScale, 0, 0}, ScaleCase{VecFftDivInvByN, 0, -1},
          ScaleCase{VecFftDivFwdByN, -1, 0}, ScaleCase{VecFftDivBySqrtN, -0.5, -0.5}}) {
      const int n = 1 << order;
      auto fft = vecFftCreate(order, s.flags, VecHintAccurate);
      ASSERT_TRUE(fft);
      ASSERT_EQ(fft->size(), n);
      const std::vector<Sample> x = randomSamples(n, order);
      const double fwdScale = std::pow(static_cast<double>(n), s.forwardPower);
      const double invScale = std::pow(static_cast<double>(n), s.inversePower);
      std::vector<Sample> fwd = directDft(x, -1), inv = directDft(x, +1);
      for (Sample& v : fwd) v *= static_cast<float>(fwdScale);
      for (Sample& v : inv) v *= static_cast<float>(invScale);
      const double tolerance = 1e-6 * std::sqrt(n) * (1 + order) * std::max(fwdScale, invScale);
      for (int offset :
           {0, 1}) {  // aligned arrays go straight to FFTW, others through the work buffer
        Placed<Sample> src(n, offset), dst(n, 0);
        std::copy(x.begin(), x.end(), src.get());
        vecFftForward32fc(src.get(), dst.get(), fft.get());
        EXPECT_LT(worstError(dst.get(), fwd), tolerance) << order << " flags " << s.flags;
        vecFftInverse32fc(src.get(), src.get(), fft.get());  // in place
        EXPECT_LT(worstError(src.get(), inv), tolerance) << order << " flags " << s.flags;
      }
    }
}

TEST(VecFft, RefusesOrdersAndFlagsOutOfRange) {
  EXPECT_FALSE(vecFftCreate(-1, VecFftNoScale, 0));
  EXPECT_FALSE(vecFftCreate(28, VecFftNoScale, 0));
  EXPECT_FALSE(vecFftCreate(4, VecFftDivInvByN | VecFftDivFwdByN, 0));
}

// FFTW plans on one thread at a time; the streaming and user interface threads both make
// FFT and long FIR objects.
TEST(VecFft, ObjectsMadeOnTwoThreadsAtOnce) {
  auto churn = [] {
    const std::vector<Sample> taps(100, Sample(0.01f, 0.0f));
    for (int i = 0; i < 200; ++i) {
      auto fft = vecFftCreate(4 + i % 8, VecFftNoScale, 0);
      auto fir = vecFirCreate32fc(taps.data(), 100);
      ASSERT_TRUE(fft && fir);
    }
  };
  std::thread other(churn);
  churn();
  other.join();
}

}  // namespace
