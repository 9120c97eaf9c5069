// SPDX-License-Identifier: MIT
// Filtering of a periodic record: no transient at the wrap and the filter's delay removed.
#include "dsp/filter_circular.h"

#include "dsp/vec_status.h"

#include <algorithm>
#include <cstring>
#include <vector>

namespace {

int apply(VecFir32fc* fir, const Sample* src, Sample* dst, int n) {
  return vecFirApply32fc(fir, src, dst, n);
}
int apply(VecFir32f* fir, const float* src, float* dst, int n) {
  return vecFirApply32f(fir, src, dst, n);
}

template <class T>
void moveWithin(const T* src, T* dst, int n) {
  std::memmove(dst, src, sizeof(T) * static_cast<size_t>(n));
}

// length >= taps. The filter runs over the tail, the whole record, then the head once more,
// so that every output sees the record as periodic; the outputs, which lag by half, are
// shifted back by half. The only extra memory is the scratch of one filter length.
template <class Fir, class T>
void filterLong(Fir* fir, T* x, int length) {
  const int taps = fir->length();
  const int half = taps / 2;
  std::vector<T> scratch(taps);
  apply(fir, x + length - taps, scratch.data(), taps);  // primes the delay line with the tail
  std::copy(x, x + taps, scratch.begin());              // keeps the head for the wrap
  apply(fir, x, x, taps);
  moveWithin(x + half, x, taps - half);  // drops the delay
  if (length > taps) {
    apply(fir, x + taps, x + taps, length - taps);
    moveWithin(x + taps, x + taps - half, length - taps);
  }
  apply(fir, scratch.data(), scratch.data(), taps);  // the head again, after the tail
  std::copy(scratch.begin(), scratch.begin() + half, x + length - half);
}

template <class Fir, class T>
int filterCircularT(Fir* fir, T* samples, int length) {
  if (length < 1) return VecErrSize;
  if (!fir || !samples) return VecErrNull;
  const int taps = fir->length();
  if (length >= taps) {
    filterLong(fir, samples, length);
    return VecOk;
  }
  // Whole periods repeated until they cover the filter: the circular result over the copy is
  // periodic in length, so its first period is the answer.
  std::vector<T> copy(samples, samples + length);
  while (static_cast<int>(copy.size()) < taps) {
    const size_t size = copy.size();
    copy.resize(2 * size);
    std::copy_n(copy.begin(), size, copy.begin() + size);
  }
  filterLong(fir, copy.data(), static_cast<int>(copy.size()));
  std::copy(copy.begin(), copy.begin() + length, samples);
  return VecOk;
}

}  // namespace

int filterCircular(VecFir32fc* fir, Sample* samples, int length) {
  return filterCircularT(fir, samples, length);
}
int filterCircular(VecFir32f* fir, float* samples, int length) {
  return filterCircularT(fir, samples, length);
}
