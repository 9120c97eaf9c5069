// SPDX-License-Identifier: MIT
// Fills, copies, arithmetic and reductions against plain loops, on odd lengths and misaligned arrays.
#include "dsp/vec_arith.h"
#include "dsp/vec_fill.h"
#include "dsp/vec_reduce.h"
#include "dsp/vec_reference.h"
#include "dsp/vec_status.h"
#include "dsp_test_data.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>

namespace {

using Floats = std::function<int(const float* a, const float* b, float* dst, int n)>;
using Reference = std::function<void(const float* a, const float* b, float* dst, int i)>;

const Sample* cx(const float* p) { return reinterpret_cast<const Sample*>(p); }
Sample* cx(float* p) { return reinterpret_cast<Sample*>(p); }

// One element-wise kernel over float views of its arrays; width = floats an element.
struct ElementCase {
  std::string name;
  int inWidth, outWidth;
  Floats kernel;
  Reference reference;  // writes element i of dst
  float tolerance;      // 0: bit-exact
};

void complexProduct(const float* a, const float* b, float* d) {
  const std::complex<double> p = std::complex<double>(a[0], a[1]) * std::complex<double>(b[0], b[1]);
  d[0] = static_cast<float>(p.real());
  d[1] = static_cast<float>(p.imag());
}

const float kB[2] = {0.75f, -1.25f};  // the constant of the ...C kernels

std::vector<ElementCase> elementCases() {
  return {
      {"Copy32f", 1, 1, vecCopy32f, [](const float* a, const float*, float* d, int i) { d[i] = a[i]; }, 0},
      {"Copy32fc", 2, 2, [](const float* a, const float*, float* d, int n) { return vecCopy32fc(cx(a), cx(d), n); },
       [](const float* a, const float*, float* d, int i) { d[2 * i] = a[2 * i], d[2 * i + 1] = a[2 * i + 1]; }, 0},
      {"Move32fc", 2, 2, [](const float* a, const float*, float* d, int n) { return vecMove32fc(cx(a), cx(d), n); },
       [](const float* a, const float*, float* d, int i) { d[2 * i] = a[2 * i], d[2 * i + 1] = a[2 * i + 1]; }, 0},
      {"Set32f", 1, 1, [](const float*, const float*, float* d, int n) { return vecSet32f(kB[0], d, n); },
       [](const float*, const float*, float* d, int i) { d[i] = kB[0]; }, 0},
      {"Set32fc", 1, 2, [](const float*, const float*, float* d, int n) { return vecSet32fc(kB[0], kB[1], cx(d), n); },
       [](const float*, const float*, float* d, int i) { d[2 * i] = kB[0], d[2 * i + 1] = kB[1]; }, 0},
      {"Zero32fc", 1, 2, [](const float*, const float*, float* d, int n) { return vecZero32fc(cx(d), n); },
       [](const float*, const float*, float* d, int i) { d[2 * i] = d[2 * i + 1] = 0; }, 0},
      {"Add32fc", 2, 2, [](const float* a, const float* b, float* d, int n) { return vecAdd32fc(cx(a), cx(b), cx(d), n); },
       [](const float* a, const float* b, float* d, int i) { vecref::add32fc(cx(a) + i, cx(b) + i, cx(d) + i, 1); }, 0},
      {"Mul32fc", 2, 2, [](const float* a, const float* b, float* d, int n) { return vecMul32fc(cx(a), cx(b), cx(d), n); },
       [](const float* a, const float* b, float* d, int i) { complexProduct(a + 2 * i, b + 2 * i, d + 2 * i); }, 2e-7f},
      {"AddC32fc", 2, 2, [](const float* a, const float*, float* d, int n) { return vecAddC32fc(cx(a), kB[0], kB[1], cx(d), n); },
       [](const float* a, const float*, float* d, int i) { d[2 * i] = a[2 * i] + kB[0], d[2 * i + 1] = a[2 * i + 1] + kB[1]; }, 0},
      {"MulC32fc", 2, 2, [](const float* a, const float*, float* d, int n) { return vecMulC32fc(cx(a), kB[0], kB[1], cx(d), n); },
       [](const float* a, const float*, float* d, int i) { complexProduct(a + 2 * i, kB, d + 2 * i); }, 2e-7f},
      {"MulC32fcInPlace", 2, 2,
       [](const float* a, const float*, float* d, int n) {
         vecCopy32fc(cx(a), cx(d), n);
         return vecMulC32fcInPlace(kB[0], kB[1], cx(d), n);
       },
       [](const float* a, const float*, float* d, int i) { complexProduct(a + 2 * i, kB, d + 2 * i); }, 2e-7f},
      {"MulC32f", 1, 1, [](const float* a, const float*, float* d, int n) { return vecMulC32f(a, kB[1], d, n); },
       [](const float* a, const float*, float* d, int i) { d[i] = a[i] * kB[1]; }, 0},
      {"MulC32fInPlace", 1, 1,
       [](const float* a, const float*, float* d, int n) {
         vecCopy32f(a, d, n);
         return vecMulC32fInPlace(kB[1], d, n);
       },
       [](const float* a, const float*, float* d, int i) { d[i] = a[i] * kB[1]; }, 0},
      {"DivC32f", 1, 1, [](const float* a, const float*, float* d, int n) { return vecDivC32f(a, kB[1], d, n); },
       [](const float* a, const float*, float* d, int i) { d[i] = a[i] / kB[1]; }, 0},
      {"RealToComplex", 1, 2, [](const float* a, const float* b, float* d, int n) { return vecRealToComplex(a, b, cx(d), n); },
       [](const float* a, const float* b, float* d, int i) { d[2 * i] = a[i], d[2 * i + 1] = b[i]; }, 0},
      {"RealToComplexNullIm", 1, 2, [](const float* a, const float*, float* d, int n) { return vecRealToComplex(a, nullptr, cx(d), n); },
       [](const float* a, const float*, float* d, int i) { d[2 * i] = a[i], d[2 * i + 1] = 0; }, 0},
      {"Imag32fc", 2, 1, [](const float* a, const float*, float* d, int n) { return vecImag32fc(cx(a), d, n); },
       [](const float* a, const float*, float* d, int i) { d[i] = a[2 * i + 1]; }, 0},
      {"Real32fc", 2, 1, [](const float* a, const float*, float* d, int n) { return vecReal32fc(cx(a), d, n); },
       [](const float* a, const float*, float* d, int i) { d[i] = a[2 * i]; }, 0},
  };
}

constexpr int kGuard = 5;      // elements past n that must stay untouched
constexpr float kSentinel = -77.0f;

class ElementKernels : public ::testing::TestWithParam<ElementCase> {};

TEST_P(ElementKernels, MatchPlainLoopOnOddLengthsAndMisalignedArrays) {
  const ElementCase& c = GetParam();
  for (int n : kOddLengths)
    for (int offset : {0, 1, 3}) {
      const std::vector<float> a = randomFloats(n * c.inWidth, n), b = randomFloats(n * c.inWidth, n + 1);
      Placed<float> pa(n * c.inWidth, offset), pb(n * c.inWidth, (offset + 1) % 4);
      Placed<float> pd(n * c.outWidth + kGuard, (offset + 2) % 4);
      std::copy(a.begin(), a.end(), pa.get());
      std::copy(b.begin(), b.end(), pb.get());
      std::fill(pd.get(), pd.get() + n * c.outWidth + kGuard, kSentinel);
      std::vector<float> expected(n * c.outWidth);
      for (int i = 0; i < n; ++i) c.reference(a.data(), b.data(), expected.data(), i);

      ASSERT_EQ(c.kernel(pa.get(), pb.get(), pd.get(), n), VecOk) << n;
      for (int i = 0; i < n * c.outWidth; ++i)
        ASSERT_NEAR(pd[i], expected[i], c.tolerance * std::fabs(expected[i])) << "n " << n << " offset " << offset << " at " << i;
      for (int i = 0; i < kGuard; ++i) ASSERT_EQ(pd[n * c.outWidth + i], kSentinel) << "wrote past n " << n;
    }
}

TEST_P(ElementKernels, ZeroLengthLeavesDestinationAlone) {
  const ElementCase& c = GetParam();
  std::vector<float> a(8, 1.0f), b(8, 2.0f), d(8, kSentinel);
  EXPECT_EQ(c.kernel(a.data(), b.data(), d.data(), 0), VecErrSize);
  EXPECT_EQ(c.kernel(a.data(), b.data(), d.data(), -3), VecErrSize);
  for (float v : d) EXPECT_EQ(v, kSentinel);
}

INSTANTIATE_TEST_SUITE_P(All, ElementKernels, ::testing::ValuesIn(elementCases()),
                         [](const auto& info) { return info.param.name; });

TEST(ArithKernels, InPlaceEqualsOutOfPlace) {
  const int n = 1001;
  const std::vector<Sample> a = randomSamples(n, 1), b = randomSamples(n, 2);
  std::vector<Sample> out(n), inPlace = a;
  vecMul32fc(a.data(), b.data(), out.data(), n);
  vecMul32fc(inPlace.data(), b.data(), inPlace.data(), n);
  EXPECT_EQ(inPlace, out);
  inPlace = a;
  vecAdd32fc(inPlace.data(), b.data(), inPlace.data(), n);
  vecAdd32fc(a.data(), b.data(), out.data(), n);
  EXPECT_EQ(inPlace, out);
}

TEST(ArithKernels, DivisionByZeroFailsAndLeavesDestination) {
  std::vector<float> src(9, 1.0f), dst(9, kSentinel);
  EXPECT_EQ(vecDivC32f(src.data(), 0.0f, dst.data(), 9), VecErrDivByZero);
  for (float v : dst) EXPECT_EQ(v, kSentinel);
}

TEST(ArithKernels, MoveHandlesOverlapInBothDirections) {
  std::vector<float> v(40);
  for (int i = 0; i < 40; ++i) v[i] = static_cast<float>(i);
  vecMove32f(v.data(), v.data() + 3, 30);  // forward overlap
  for (int i = 0; i < 30; ++i) ASSERT_EQ(v[3 + i], static_cast<float>(i));
  vecMove32f(v.data() + 3, v.data(), 30);  // back again
  for (int i = 0; i < 30; ++i) ASSERT_EQ(v[i], static_cast<float>(i));
}

TEST(ArithKernels, IntegerDoubleAndConversionKernels) {
  const int n = 17;
  std::vector<int16_t> s16 = {-32768, -1, 0, 1, 16384, 32767};
  std::vector<float> f(s16.size());
  vecConvert16sTo32f(s16.data(), f.data(), static_cast<int>(s16.size()), 15);
  const std::vector<float> expected = {-1.0f, -1.0f / 32768, 0.0f, 1.0f / 32768, 0.5f, 32767.0f / 32768};
  EXPECT_EQ(f, expected);

  std::vector<uint32_t> u(n), masked(n);
  for (int i = 0; i < n; ++i) u[i] = 0x9E3779B9u * (i + 1);
  vecAndC32u(u.data(), 0x00FF00F0u, masked.data(), n);
  for (int i = 0; i < n; ++i) EXPECT_EQ(masked[i], u[i] & 0x00FF00F0u);

  std::vector<double> d(n), scaled(n);
  vecSet64f(0.1, d.data(), n);
  vecMulC64f(d.data(), 3.0, scaled.data(), n);
  for (int i = 0; i < n; ++i) EXPECT_EQ(scaled[i], 0.1 * 3.0);
}

TEST(ReduceKernels, AccurateSumOfAMillionThousandths) {
  const int n = 1000000;
  std::vector<float> v(n, 1e-3f);
  float sum = 0;
  ASSERT_EQ(vecSum32f(v.data(), n, &sum, VecHintAccurate), VecOk);
  // The exact sum of n copies of float(1e-3) is representable to well below a float ulp.
  const double exact = static_cast<double>(1e-3f) * n;
  EXPECT_EQ(sum, static_cast<float>(exact));
  float fast = 0;
  vecSum32f(v.data(), n, &fast, VecHintNone);
  EXPECT_NEAR(fast, exact, exact * 2e-6);  // pairwise: far from a naive float sum's 1e-2
}

TEST(ReduceKernels, SumsAndExtremesMatchPlainLoops) {
  for (int n : kOddLengths)
    for (int offset : {0, 1, 3}) {
      const std::vector<float> v = randomFloats(n, 7 * n, 100.0f);
      Placed<float> p(n, offset);
      std::copy(v.begin(), v.end(), p.get());
      const double exact = vecref::sum32f(v.data(), n);
      double absSum = 0;
      for (float x : v) absSum += std::fabs(x);
      float sum = 0, fast = 0, mn = 0, mx = 0, maxAbs = 0;
      vecSum32f(p.get(), n, &sum, VecHintAccurate);
      vecSum32f(p.get(), n, &fast, VecHintFast);
      EXPECT_NEAR(sum, exact, 1e-6 * absSum) << n;
      EXPECT_NEAR(fast, exact, 2e-6 * absSum) << n;
      vecMin32f(p.get(), n, &mn);
      vecMax32f(p.get(), n, &mx);
      vecMaxAbs32f(p.get(), n, &maxAbs);
      EXPECT_EQ(mn, *std::min_element(v.begin(), v.end())) << n;
      EXPECT_EQ(mx, *std::max_element(v.begin(), v.end())) << n;
      EXPECT_EQ(maxAbs, std::max(std::fabs(mn), std::fabs(mx))) << n;
      std::vector<double> dv(v.begin(), v.end());
      double sum64 = 0;
      vecSum64f(dv.data(), n, &sum64);
      EXPECT_NEAR(sum64, exact, 1e-12 * absSum) << n;
    }
}

TEST(ReduceKernels, EmptyInputLeavesResult) {
  float v[1] = {5.0f}, result = kSentinel;
  EXPECT_EQ(vecSum32f(v, 0, &result, VecHintAccurate), VecErrSize);
  EXPECT_EQ(vecMaxAbs32f(v, 0, &result), VecErrSize);
  EXPECT_EQ(vecMin32f(v, -1, &result), VecErrSize);
  EXPECT_EQ(result, kSentinel);
}

}  // namespace
