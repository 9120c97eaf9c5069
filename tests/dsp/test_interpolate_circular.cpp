// SPDX-License-Identifier: MIT
// Shaping of spaced values against a direct circular convolution of the zero-stuffed record.
#include "dsp/interpolate_circular.h"
#include "dsp/vec_status.h"
#include "dsp_test_data.h"

#include <gtest/gtest.h>

namespace {

// y(i) = sum over k of h(k) x((i + taps / 2 - k) mod n) over the zero-stuffed record, in double.
std::vector<float> stuffedReference(const std::vector<float>& v, int factor,
                                    const std::vector<float>& h) {
  const int n = static_cast<int>(v.size()) * factor, taps = static_cast<int>(h.size());
  std::vector<float> x(n, 0.0f), y(n);
  for (size_t p = 0; p < v.size(); ++p) x[p * factor] = v[p];
  for (int i = 0; i < n; ++i) {
    double acc = 0;
    for (int k = 0; k < taps; ++k) acc += double(h[k]) * x[((i + taps / 2 - k) % n + n) % n];
    y[i] = static_cast<float>(acc);
  }
  return y;
}

// Factors with filters shorter and longer than one phase, even and odd, records shorter than
// the filter, stretches that start before 0 or past the wrap, cross a block or are interleaved.
TEST(InterpolateCircular, EqualsTheStuffedRecordFilteredCircularly) {
  struct Row {
    int factor, taps, values;
  };
  const Row rows[] = {{1, 7, 40},   {2, 3, 1},    {2, 16, 9},  {3, 2, 5},     {4, 33, 3},
                      {4, 33, 600}, {8, 257, 40}, {8, 5, 700}, {8, 258, 1500}};
  for (const Row& row : rows) {
    const std::vector<float> h = randomFloats(row.taps, row.taps),
                             v = randomFloats(row.values, row.values + 1);
    const std::vector<float> y = stuffedReference(v, row.factor, h);
    const int64_t n = static_cast<int64_t>(y.size());
    for (int64_t first : {int64_t{0}, int64_t{-3}, n - 1, 2 * n + 5}) {
      const int64_t count = std::min<int64_t>(n + 7, 5000);
      std::vector<float> got(2 * count + 1, -9.0f);
      ASSERT_EQ(interpolateCircular(v.data(), row.values, row.factor, h.data(), row.taps, first,
                                    count, got.data() + 1, 2),
                VecOk);
      double worst = 0;
      for (int64_t t = 0; t < count; ++t) {
        worst = std::max(worst, std::abs(double(got[2 * t + 1]) - y[((first + t) % n + n) % n]));
        ASSERT_EQ(got[2 * t], -9.0f) << "stride " << t;
      }
      EXPECT_LT(worst, 1e-6 * row.taps)
          << row.factor << " " << row.taps << " " << row.values << " from " << first;
    }
  }
  float out = 5.0f;
  EXPECT_EQ(interpolateCircular(&out, 1, 0, &out, 1, 0, 1, &out, 1), VecErrSize);
  EXPECT_EQ(out, 5.0f);
}

}  // namespace
