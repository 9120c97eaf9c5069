// SPDX-License-Identifier: MIT
// Circular filtering against a direct circular convolution, and what periodic records keep.
#include "dsp/filter_circular.h"
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
      const std::vector<Sample> expected = circularReference(h, x);
      ASSERT_EQ(filterCircular(fir.get(), buffer.get(), length), VecOk);
      EXPECT_LT(worstError(buffer.get(), expected), 1e-6 * taps) << taps << " " << length;
      for (int i = 0; i < guard; ++i)
        ASSERT_EQ(buffer[length + i], Sample(-7.0f, 7.0f)) << "length changed";
      // Again with the same object: the state the first call left must not matter.
      std::copy(x.begin(), x.end(), buffer.get());
      filterCircular(fir.get(), buffer.get(), length);
      EXPECT_LT(worstError(buffer.get(), expected), 1e-6 * taps) << taps << " " << length;

      const std::vector<float> hr = randomFloats(taps, taps), xr = randomFloats(length, length);
      std::vector<float> real = xr;
      auto realFir = vecFirCreate32f(hr.data(), taps);
      ASSERT_EQ(filterCircular(realFir.get(), real.data(), length), VecOk);
      EXPECT_LT(worstError(real.data(), circularReference(hr, xr)), 1e-6 * taps)
          << taps << " " << length;
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
