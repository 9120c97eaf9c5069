// SPDX-License-Identifier: MIT
// Reductions of float and double arrays: sums and extremes.
#include "dsp/vec_reduce.h"

#include "dsp/vec_status.h"

#include <cmath>

namespace {

constexpr int kLanes = 8;  // independent accumulators, so the compiler can vectorise
constexpr int kPairwiseLeaf = 256;

int check(const void* src, const void* result, int n) {
  if (n < 1) return VecErrSize;
  if (!src || !result) return VecErrNull;
  return VecOk;
}

// Lane-wise accumulation: each lane is an in-order sum, so precision is that of T.
template <class Acc, class T>
Acc laneSum(const T* src, int n) {
  Acc lane[kLanes] = {};
  const int whole = n - n % kLanes;
  for (int i = 0; i < whole; i += kLanes)
    for (int j = 0; j < kLanes; ++j) lane[j] += static_cast<Acc>(src[i + j]);
  Acc total = 0;
  for (int j = 0; j < kLanes; ++j) total += lane[j];
  for (int i = whole; i < n; ++i) total += static_cast<Acc>(src[i]);
  return total;
}

float pairwiseSum(const float* src, int n) {
  if (n <= kPairwiseLeaf) return laneSum<float>(src, n);
  const int half = n / 2;
  return pairwiseSum(src, half) + pairwiseSum(src + half, n - half);
}

template <class Pick>
int extreme(const float* src, int n, float* result, Pick pick) {
  if (int status = check(src, result, n)) return status;
  float lane[kLanes];
  for (int j = 0; j < kLanes; ++j) lane[j] = src[0];
  const int whole = n - n % kLanes;
  for (int i = 0; i < whole; i += kLanes)
    for (int j = 0; j < kLanes; ++j) lane[j] = pick(lane[j], src[i + j]);
  float best = src[0];
  for (int j = 0; j < kLanes; ++j) best = pick(best, lane[j]);
  for (int i = whole; i < n; ++i) best = pick(best, src[i]);
  *result = best;
  return VecOk;
}

}  // namespace

int vecSum32f(const float* src, int n, float* sum, int hint) {
  if (int status = check(src, sum, n)) return status;
  *sum =
      hint == VecHintAccurate ? static_cast<float>(laneSum<double>(src, n)) : pairwiseSum(src, n);
  return VecOk;
}

int vecSum64f(const double* src, int n, double* sum) {
  if (int status = check(src, sum, n)) return status;
  *sum = laneSum<double>(src, n);
  return VecOk;
}

int vecMaxAbs32f(const float* src, int n, float* result) {
  if (int status = check(src, result, n)) return status;
  float lane[kLanes] = {};
  const int whole = n - n % kLanes;
  for (int i = 0; i < whole; i += kLanes)
    for (int j = 0; j < kLanes; ++j) {
      const float a = std::fabs(src[i + j]);
      lane[j] = a > lane[j] ? a : lane[j];
    }
  float best = 0.0f;
  for (int j = 0; j < kLanes; ++j) best = lane[j] > best ? lane[j] : best;
  for (int i = whole; i < n; ++i) best = std::fabs(src[i]) > best ? std::fabs(src[i]) : best;
  *result = best;
  return VecOk;
}

int vecMin32f(const float* src, int n, float* result) {
  return extreme(src, n, result, [](float a, float b) { return b < a ? b : a; });
}

int vecMax32f(const float* src, int n, float* result) {
  return extreme(src, n, result, [](float a, float b) { return b > a ? b : a; });
}
