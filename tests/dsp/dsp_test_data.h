// SPDX-License-Identifier: MIT
// Test data for the kernel tests: seeded random arrays placed at chosen misalignments.
#pragma once

#include "dsp/sample.h"
#include "dsp/vec_alloc.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

// Lengths that leave remainders after any vector width, and a long one.
inline const std::vector<int> kOddLengths = {1, 3, 7, 17, 63, 1001, 4099};

// n elements of T starting `offset` elements past a 64-byte boundary.
template <class T>
class Placed {
public:
  Placed(int n, int offset) : block(vecAllocArray<T>(n + offset)), data(block.get() + offset) {}
  T* get() { return data; }
  T& operator[](int i) { return data[i]; }

private:
  VecArray<T> block;
  T* data;
};

inline std::vector<float> randomFloats(int n, unsigned seed, float scale = 1.0f) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<float> dist(-scale, scale);
  std::vector<float> v(n);
  for (float& x : v) x = dist(rng);
  return v;
}

inline std::vector<Sample> randomSamples(int n, unsigned seed) {
  const std::vector<float> f = randomFloats(2 * n, seed);
  std::vector<Sample> v(n);
  for (int i = 0; i < n; ++i) v[i] = Sample(f[2 * i], f[2 * i + 1]);
  return v;
}

// Largest absolute difference between got[i] and expected[i].
template <class T>
double worstError(const T* got, const std::vector<T>& expected) {
  double worst = 0;
  for (size_t i = 0; i < expected.size(); ++i)
    worst = std::max(worst, static_cast<double>(std::abs(got[i] - expected[i])));
  return worst;
}
template <class T>
double worstError(const std::vector<T>& got, const std::vector<T>& expected) {
  return worstError(got.data(), expected);
}
