// SPDX-License-Identifier: MIT
// Circular filtering against a direct circular convolution, and what periodic records keep.
#include "dsp/filter_circular.h"
#include "dsp/vec_design.h"
#include "dsp/vec_status.h"
#include "dsp_test_data.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <complex>

namespace {

// out(j) = sum over k of h(k) x((j + taps / 2 - k) mod length), in double.
template <class T>
std::vector<T> circularReference(const std::vector<T>& h, const std::vector<T>& x) {
  const int taps = static_cast<int>(h.size()), length = static_cast<int>(x.size());
  std::vector<T> out(length);
  for (int j = 0; j < length; ++j) {
    std::complex<double> acc = 0;
    for (int k = 0; k < taps; ++k)
      acc += std::complex<double>(h[k]) *
             std::complex<double>(x[((j + taps / 2 - k) % length + length) % length]);
    if constexpr (std::is_same_v<T, float>)
      out[j] = static_cast<float>(acc.real());
    else
      out[j] = T(acc);
  }
  return out;
}

template <class T>
double worstError(const T* got, const std::vector<T>& expected) {
  double worst = 0;
  for (size_t i = 0; i < expected.size(); ++i)
    worst = std::max(worst, static_cast<double>(std::abs(got[i] - expected[i])));
  return worst;
}

// Records shorter than, equal to and longer than the filter; the last two filters take the
// FFT form over long records.
TEST(FilterCircular, EqualsCircularConvolutionForRealAndComplex) {
  for (int taps : {1, 2, 15, 16, 65, 129})
    for (int length : {1, 2, 7, 15, 16, 64, 65, 66, 200, 5001}) {
      const std::vector<Sample> h = randomSamples(taps, taps), x = randomSamples(length, length);
      const int guard = 3;
      Placed<Sample> buffer(length + guard, 1);
      std::copy(x.begin(), x.end(), buffer.get());
      std::fill(buffer.get() + length, buffer.get() + length + guard, Sample(-7.0f, 7.0f));
      auto fir = vecFirCreate32fc(h.data(), taps);
      ASSERT_EQ(filterCircular(fir.get(), buffer.get(), length), VecOk);
      EXPECT_LT(worstError(buffer.get(), circularReference(h, x)), 1e-6 * taps)
          << taps << " " << length;
      for (int i = 0; i < guard; ++i)
        ASSERT_EQ(buffer[length + i], Sample(-7.0f, 7.0f)) << "length changed";

      const std::vector<float> hr = randomFloats(taps, taps), xr = randomFloats(length, length);
      std::vector<float> real = xr;
      auto realFir = vecFirCreate32f(hr.data(), taps);
      ASSERT_EQ(filterCircular(realFir.get(), real.data(), length), VecOk);
      EXPECT_LT(worstError(real.data(), circularReference(hr, xr)), 1e-6 * taps)
          << taps << " " << length;
    }
}

// The channel filter's default: 15 taps, 1 at the centre.
TEST(FilterCircular, PassThroughLeavesRecordsUnchanged) {
  std::vector<Sample> taps(15);
  taps[7] = Sample(1.0f, 0.0f);
  for (int length : {1, 5, 14, 15, 16, 1000}) {
    const std::vector<Sample> x = randomSamples(length, length);
    std::vector<Sample> y = x;
    auto fir = vecFirCreate32fc(taps.data(), 15);
    filterCircular(fir.get(), y.data(), length);
    EXPECT_EQ(y, x) << length;
  }
}

// As one period of an endless signal, a rotated record filters to the rotated result: no
// sample is special and there is no transient at the wrap.
TEST(FilterCircular, CommutesWithRotation) {
  std::vector<double> design(65);
  vecDesignLowpass(0.4, design.data(), 65, VecWindowBlackman, true);
  const std::vector<Sample> taps(design.begin(), design.end());
  const int length = 3000;
  const std::vector<Sample> x = randomSamples(length, 11);
  auto fir = vecFirCreate32fc(taps.data(), 65);
  for (int shift : {1, 32, 33, 64, 2999}) {
    std::vector<Sample> a = x, b = x;
    std::rotate(b.begin(), b.begin() + shift, b.end());
    filterCircular(fir.get(), a.data(), length);
    filterCircular(fir.get(), b.data(),
                   length);  // the state left by the call before must not matter
    std::rotate(a.begin(), a.begin() + shift, a.end());
    EXPECT_LT(worstError(b.data(), a), 1e-6) << shift;
  }
}

TEST(FilterCircular, RefusesEmptyRecords) {
  const Sample tap(1.0f, 0.0f);
  auto fir = vecFirCreate32fc(&tap, 1);
  Sample x(3.0f, 0.0f);
  EXPECT_EQ(filterCircular(fir.get(), &x, 0), VecErrSize);
  EXPECT_EQ(filterCircular(static_cast<VecFir32fc*>(nullptr), &x, 1), VecErrNull);
  EXPECT_EQ(x, Sample(3.0f, 0.0f));
}

}  // namespace
