// SPDX-License-Identifier: MIT
// Circular shaping of values that stand `factor` samples apart, without the zeros between them.
#include "dsp/interpolate_circular.h"

#include "dsp/vec_status.h"

#include <algorithm>
#include <vector>

// Output i = q × factor + r (after the shift by half the filter) sees only the taps
// r, r + factor, r + 2 factor, ... each against one value: x is zero elsewhere. So each phase r
// is a short FIR over the values, run over a window of them copied out round the wrap.

namespace {

constexpr int64_t kBlock = 2048;  // outputs a pass; window and accumulators stay in L1

int64_t wrap(int64_t i, int64_t n) {
  const int64_t m = i % n;
  return m < 0 ? m + n : m;
}

// Where the processor has AVX2 a copy of eight lanes runs; without FMA its sums round as the
// four-lane form's do, so the output doesn't depend on the processor. The copy is chosen by a
// resolver that runs while the program loads, before ThreadSanitizer's runtime is up, which
// faults: its builds keep the one copy.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__SANITIZE_THREAD__)
#define KRT40_WIDE_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define KRT40_WIDE_CLONES
#endif

// acc(q) = sum over j < m of g(j) × w(q - j), q < count; four taps a pass for the vectoriser.
KRT40_WIDE_CLONES void phaseFir(const float* w, const float* g, int m, float* acc, int64_t count) {
  std::fill(acc, acc + count, 0.0f);
  int j = 0;
  for (; j + 4 <= m; j += 4) {
    const float g0 = g[j], g1 = g[j + 1], g2 = g[j + 2], g3 = g[j + 3];
    const float *w0 = w - j, *w1 = w0 - 1, *w2 = w0 - 2, *w3 = w0 - 3;
    for (int64_t q = 0; q < count; ++q)
      acc[q] += (g0 * w0[q] + g1 * w1[q]) + (g2 * w2[q] + g3 * w3[q]);
  }
  for (; j < m; ++j) {
    const float gj = g[j];
    const float* wj = w - j;
    for (int64_t q = 0; q < count; ++q) acc[q] += gj * wj[q];
  }
}

class Shaper {
public:
  Shaper(const float* values, int64_t valueCount, int factor, const float* taps, int tapCount)
      : values(values),
        valueCount(valueCount),
        factor(factor),
        taps(taps),
        tapCount(tapCount),
        subLength((tapCount + factor - 1) / factor),
        g(static_cast<size_t>(subLength)),
        acc(static_cast<size_t>(kBlock)) {}

  // The outputs of u = u0 ... u0 + count - 1, with u = index + half, u0 >= 0, count <= kBlock.
  void block(int64_t u0, int64_t count, float* dst, int stride) {
    const int64_t qLow = u0 / factor - (subLength - 1), qHigh = (u0 + count - 1) / factor;
    window.resize(static_cast<size_t>(qHigh - qLow + 1));
    for (int64_t i = 0, v = wrap(qLow, valueCount); i <= qHigh - qLow; ++i) {
      window[i] = values[v];
      if (++v == valueCount) v = 0;
    }
    const int64_t step = static_cast<int64_t>(factor) * stride;
    for (int r = 0; r < factor; ++r) {
      const int64_t t0 = wrap(r - u0, factor);  // the first output of this phase
      if (t0 >= count) continue;
      const int64_t outputs = (count - t0 + factor - 1) / factor;
      const int64_t q0 = (u0 + t0) / factor;
      const int m = (tapCount - r + factor - 1) / factor;  // 0 past a filter shorter than factor
      for (int j = 0; j < m; ++j) g[j] = taps[r + static_cast<int64_t>(j) * factor];
      phaseFir(window.data() + (q0 - qLow), g.data(), m, acc.data(), outputs);
      float* out = dst + t0 * stride;
      for (int64_t q = 0; q < outputs; ++q) out[q * step] = acc[q];
    }
  }

private:
  const float* values;
  int64_t valueCount;
  int factor;
  const float* taps;
  int tapCount;
  int subLength;         // taps a phase at most
  std::vector<float> g;  // the taps of one phase
  std::vector<float> window, acc;
};

}  // namespace

int interpolateCircular(const float* values, int64_t valueCount, int factor, const float* taps,
                        int tapCount, int64_t first, int64_t count, float* dst, int stride) {
  if (valueCount < 1 || factor < 1 || tapCount < 1 || count < 1 || stride < 1) return VecErrSize;
  if (!values || !taps || !dst) return VecErrNull;
  const int64_t n = valueCount * factor;
  Shaper shaper(values, valueCount, factor, taps, tapCount);
  for (int64_t done = 0; done < count; done += kBlock) {
    const int64_t part = std::min(kBlock, count - done);
    shaper.block(wrap(first + done, n) + tapCount / 2, part, dst + done * stride, stride);
  }
  return VecOk;
}
