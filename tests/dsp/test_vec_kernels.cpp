// SPDX-License-Identifier: MIT
// Element-wise kernels and reductions against plain loops, on odd lengths and misaligned arrays.
#include "dsp/vec_arith.h"
#include "dsp/vec_reduce.h"
#include "dsp/vec_reference.h"
#include "dsp/vec_status.h"
#include "dsp_test_data.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <functional>
#include <string>

namespace {

const Sample* cx(const float* p) { return reinterpret_cast<const Sample*>(p); }
Sample* cx(float* p) { return reinterpret_cast<Sample*>(p); }

// A kernel seen through float views of its arrays; width = floats an element.
struct ElementCase {
  std::string name;
  int inWidth, outWidth;
  std::function<int(const float* a, const float* b, float* dst, int n)> kernel;
  std::function<void(const float* a, const float* b, float* dst)> element;  // one element's result
  float tolerance;  // absolute; 0: bit-exact
};
void PrintTo(const ElementCase& c, std::ostream* os) { *os << c.name; }

constexpr float kRe = 0.75f, kIm = -1.25f;  // the constant of the ...C kernels

void product(const float* a, const float* b, float* d) {
  const auto p = std::complex<double>(a[0], a[1]) * std::complex<double>(b[0], b[1]);
  d[0] = static_cast<float>(p.real()), d[1] = static_cast<float>(p.imag());
}
void productC(const float* a, const float*, float* d) {
  const float c[2] = {kRe, kIm};
  product(a, c, d);
}

std::vector<ElementCase> elementCases() {
  using F = const float*;
  return {
      {"Add32fc", 2, 2,
       [](F a, F b, float* d, int n) { return vecAdd32fc(cx(a), cx(b), cx(d), n); },
       [](F a, F b, float* d) { vecref::add32fc(cx(a), cx(b), cx(d), 1); }, 0},
      {"Mul32fc", 2, 2,
       [](F a, F b, float* d, int n) { return vecMul32fc(cx(a), cx(b), cx(d), n); }, product,
       3e-7f},
      {"AddC32fc", 2, 2,
       [](F a, F, float* d, int n) { return vecAddC32fc(cx(a), kRe, kIm, cx(d), n); },
       [](F a, F, float* d) { d[0] = a[0] + kRe, d[1] = a[1] + kIm; }, 0},
      {"MulC32fc", 2, 2,
       [](F a, F, float* d, int n) { return vecMulC32fc(cx(a), kRe, kIm, cx(d), n); }, productC,
       3e-7f},
      {"MulC32fcInPlace", 2, 2,
       [](F a, F, float* d, int n) {
         return std::copy(a, a + 2 * n, d), vecMulC32fcInPlace(kRe, kIm, cx(d), n);
       },
       productC, 3e-7f},
      {"MulC32f", 1, 1, [](F a, F, float* d, int n) { return vecMulC32f(a, kIm, d, n); },
       [](F a, F, float* d) { d[0] = a[0] * kIm; }, 0},
      {"DivC32f", 1, 1, [](F a, F, float* d, int n) { return vecDivC32f(a, kIm, d, n); },
       [](F a, F, float* d) { d[0] = a[0] / kIm; }, 0},
      {"RealToComplex", 1, 2,
       [](F a, F b, float* d, int n) { return vecRealToComplex(a, b, cx(d), n); },
       [](F a, F b, float* d) { d[0] = a[0], d[1] = b[0]; }, 0},
      {"RealToComplexNullRe", 1, 2,
       [](F, F b, float* d, int n) { return vecRealToComplex(nullptr, b, cx(d), n); },
       [](F, F b, float* d) { d[0] = 0, d[1] = b[0]; }, 0},
      {"Imag32fc", 2, 1, [](F a, F, float* d, int n) { return vecImag32fc(cx(a), d, n); },
       [](F a, F, float* d) { d[0] = a[1]; }, 0},
  };
}

constexpr int kGuard = 5;  // elements past n that must stay untouched
constexpr float kSentinel = -77.0f;

class ElementKernels : public ::testing::TestWithParam<ElementCase> {};

TEST_P(ElementKernels, MatchPlainLoopAndWriteNothingElse) {
  const ElementCase& c = GetParam();
  for (int n : kOddLengths)
    for (int offset : {0, 1, 3}) {
      const std::vector<float> a = randomFloats(n * c.inWidth, n),
                               b = randomFloats(n * c.inWidth, n + 1);
      Placed<float> pa(n * c.inWidth, offset), pb(n * c.inWidth, (offset + 1) % 4);
      Placed<float> pd(n * c.outWidth + kGuard, (offset + 2) % 4);
      std::copy(a.begin(), a.end(), pa.get());
      std::copy(b.begin(), b.end(), pb.get());
      std::fill(pd.get(), pd.get() + n * c.outWidth + kGuard, kSentinel);
      ASSERT_EQ(c.kernel(pa.get(), pb.get(), pd.get(), n), VecOk);
      float expected[2];
      for (int i = 0; i < n; ++i) {
        c.element(&a[i * c.inWidth], &b[i * c.inWidth], expected);
        for (int j = 0; j < c.outWidth; ++j)
          ASSERT_NEAR(pd[i * c.outWidth + j], expected[j], c.tolerance)
              << "n " << n << " offset " << offset << " at " << i;
      }
      for (int i = 0; i < kGuard; ++i)
        ASSERT_EQ(pd[n * c.outWidth + i], kSentinel) << "wrote past n " << n;
      EXPECT_EQ(c.kernel(pa.get(), pb.get(), pd.get(), 0), VecErrSize);  // and leaves dst alone:
      EXPECT_EQ(pd[n * c.outWidth], kSentinel);
    }
}

INSTANTIATE_TEST_SUITE_P(All, ElementKernels, ::testing::ValuesIn(elementCases()),
                         [](const auto& info) { return info.param.name; });

TEST(ArithKernels, DivisionByZeroFailsAndLeavesDestination) {
  std::vector<float> src(9, 1.0f), dst(9, kSentinel);
  EXPECT_EQ(vecDivC32f(src.data(), 0.0f, dst.data(), 9), VecErrDivByZero);
  EXPECT_EQ(dst, std::vector<float>(9, kSentinel));
}

TEST(ArithKernels, Convert16sToFullScaleOne) {
  const int16_t s16[] = {-32768, -1, 0, 1, 16384, 32767};
  float f[6];
  vecConvert16sTo32f(s16, f, 6, 15);
  const float expected[] = {-1.0f, -1.0f / 32768, 0.0f, 1.0f / 32768, 0.5f, 32767.0f / 32768};
  for (int i = 0; i < 6; ++i) EXPECT_EQ(f[i], expected[i]);
}

TEST(ReduceKernels, AccurateSumOfAMillionThousandths) {
  const int n = 1000000;
  std::vector<float> v(n, 1e-3f);
  const double exact = static_cast<double>(1e-3f) * n;
  float accurate = 0, fast = 0;
  ASSERT_EQ(vecSum32f(v.data(), n, &accurate, VecHintAccurate), VecOk);
  vecSum32f(v.data(), n, &fast, VecHintNone);
  EXPECT_EQ(accurate, static_cast<float>(exact));  // correctly rounded
  EXPECT_NEAR(fast, exact, exact * 2e-6);          // a running float sum would be 1e-2 off
}

TEST(ReduceKernels, SumsAndExtremesMatchPlainLoops) {
  for (int n : kOddLengths)
    for (int offset : {0, 1, 3}) {
      const std::vector<float> v = randomFloats(n, 7 * n, 100.0f);
      Placed<float> p(n, offset);
      std::copy(v.begin(), v.end(), p.get());
      const double exact = vecref::sum32f(v.data(), n), scale = 100.0 * n;
      float sum = 0, fast = 0, mn = 0, mx = 0, maxAbs = 0;
      vecSum32f(p.get(), n, &sum, VecHintAccurate);
      vecSum32f(p.get(), n, &fast, VecHintFast);
      vecMin32f(p.get(), n, &mn);
      vecMax32f(p.get(), n, &mx);
      vecMaxAbs32f(p.get(), n, &maxAbs);
      EXPECT_NEAR(sum, exact, 1e-7 * scale) << n;
      EXPECT_NEAR(fast, exact, 1e-6 * scale) << n;
      EXPECT_EQ(mn, *std::min_element(v.begin(), v.end())) << n;
      EXPECT_EQ(mx, *std::max_element(v.begin(), v.end())) << n;
      EXPECT_EQ(maxAbs, std::max(-mn, mx)) << n;
      float untouched = kSentinel;
      EXPECT_EQ(vecSum32f(p.get(), 0, &untouched, VecHintAccurate), VecErrSize);
      EXPECT_EQ(vecMax32f(p.get(), 0, &untouched), VecErrSize);
      EXPECT_EQ(untouched, kSentinel);
    }
}

}  // namespace
