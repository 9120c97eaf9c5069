// SPDX-License-Identifier: MIT
// Seeded Gaussian noise filtered circularly, built on two threads.
#include "dsp/noise_record.h"

#include "dsp/vec_fir.h"
#include "dsp/vec_random.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <atomic>
#include <cmath>
#include <complex>
#include <cstdint>
#include <thread>

namespace {

// Samples a block of the pipeline: small enough to stay in cache between its two stages.
constexpr int64_t blockSamples = 8192;
// Samples whose pages are faulted in at a time: one huge page.
constexpr int64_t prefaultSamples = (2 << 20) / sizeof(Sample);

// A new record's memory is mapped at its first write, and those faults would fall on the
// producer, which sets the pace. The filter, which waits on the producer, faults the pages in
// ahead of it instead. Populating a page changes none of its data, so it may overlap any write.
class Prefaulter {
public:
  Prefaulter(Sample* x, int64_t length) : x(x), length(length) {}

  // Faults in the next pages beyond `from`; false when there is nothing left to do.
  bool step(int64_t from) {
#ifdef MADV_POPULATE_WRITE
    const int64_t start = std::max(done, from);
    if (start >= length) return false;
    const int64_t end = std::min(start + prefaultSamples, length);
    const uintptr_t page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
    const uintptr_t first = reinterpret_cast<uintptr_t>(x + start) & ~(page - 1);
    const uintptr_t last = (reinterpret_cast<uintptr_t>(x + end) + page - 1) & ~(page - 1);
    // A kernel without the call: the producer takes the faults as before.
    if (madvise(reinterpret_cast<void*>(first), last - first, MADV_POPULATE_WRITE) != 0 &&
        errno == EINVAL)
      done = length;
    else
      done = end;
    return true;
#else
    return false;
#endif
  }

private:
  Sample* x;
  int64_t length;
  int64_t done = 0;
};

// Output i is the taps over inputs i + half down to i - half, taken modulo the length. A linear
// filter run over the record in place gives every output but the first and last `half`,
// delayed by half; those wrap round the ends and are computed directly from the raw samples
// kept of both ends.
class CircularFilter {
public:
  CircularFilter(Sample* x, int64_t length, const std::vector<Sample>& taps)
      : x(x), length(length), half(static_cast<int>(taps.size()) / 2), taps(taps),
        fir(vecFirCreate32fc(taps.data(), static_cast<int>(taps.size()))), ends(4 * half),
        wrapped(2 * half) {}

  // Runs behind the producer, which reports the samples it has written in `ready`.
  void filterBehind(const std::atomic<int64_t>& ready) {
    Prefaulter prefaulter(x, length);
    for (int64_t at = 0; at < length; at += blockSamples) {
      const int64_t n = std::min(blockSamples, length - at);
      for (int64_t written; (written = ready.load(std::memory_order_acquire)) < at + n;)
        if (!prefaulter.step(written + blockSamples)) std::this_thread::yield();
      keepRawEnds(at, n);
      vecFirApply32fc(fir.get(), x + at, x + at, static_cast<int>(n));
      for (int64_t j = std::max<int64_t>(at, 2 * half); j < at + n; ++j) note(x[j]);
    }
    for (int i = 0; i < half; ++i) note(wrapped[i] = wrappedOutput(i));
    for (int i = 0; i < half; ++i) note(wrapped[half + i] = wrappedOutput(length - half + i));
  }

  // Moves the delayed outputs into place, dividing as it goes; the two halves of the record on
  // two threads. The lower half's last outputs read samples that the upper half overwrites,
  // so those are copied first.
  void finish(const NoiseDivisor& divisorFor) {
    const float divisor = static_cast<float>(divisorFor(peak, sumOfSquares));
    const int64_t mid = std::max<int64_t>(half, length / 2);
    std::vector<Sample> seam(x + mid, x + std::min(mid + half, length));
    std::thread upper([&] { move(mid, length - half, divisor); });
    move(half, mid - half, divisor);
    for (int64_t i = std::max<int64_t>(mid - half, half); i < std::min(mid, length - half); ++i)
      x[i] = seam[static_cast<size_t>(i + half - mid)] / divisor;
    upper.join();
    for (int i = 0; i < half; ++i) {
      x[i] = wrapped[i] / divisor;
      x[length - half + i] = wrapped[half + i] / divisor;
    }
  }

private:
  // `ends` holds the raw samples length - 2 half to length - 1, then 0 to 2 half - 1.
  void keepRawEnds(int64_t at, int64_t n) {
    for (int64_t j = at; j < std::min<int64_t>(at + n, 2 * half); ++j) ends[2 * half + j] = x[j];
    for (int64_t j = std::max(at, length - 2 * half); j < at + n; ++j)
      ends[j - (length - 2 * half)] = x[j];
  }

  void move(int64_t from, int64_t to, float divisor) {
    for (int64_t i = from; i < to; ++i) x[i] = x[i + half] / divisor;
  }

  Sample wrappedOutput(int64_t i) const {
    // Input i + half - k sits at base - k in `ends`.
    const int64_t base = (i < half ? i : i - length) + 3 * half;
    std::complex<double> acc = 0.0;
    for (int k = 0; k <= 2 * half; ++k)
      acc += std::complex<double>(taps[k]) * std::complex<double>(ends[base - k]);
    return Sample(acc);
  }

  void note(Sample y) {
    const float re = y.real(), im = y.imag();
    const float magnitude = std::sqrt(re * re + im * im);
    if (magnitude > peak) peak = magnitude;
    sumOfSquares += static_cast<double>(re) * re + static_cast<double>(im) * im;
  }

  Sample* x;
  int64_t length;
  int half;
  const std::vector<Sample>& taps;
  VecStatePtr<VecFir32fc> fir;
  std::vector<Sample> ends;
  std::vector<Sample> wrapped;
  float peak = 0.0f;
  double sumOfSquares = 0.0;
};

}  // namespace

void makeFilteredNoise(Sample* x, int64_t length, const std::vector<Sample>& taps, float stdDev,
                       unsigned int seed, const NoiseDivisor& divisorFor) {
  if (!x || taps.size() % 2 == 0 || length < static_cast<int64_t>(taps.size())) return;
  std::atomic<int64_t> ready{0};
  std::thread producer([&] {
    const VecStatePtr<VecRandGauss> noise = vecRandGaussCreate(0.0f, stdDev, seed);
    for (int64_t at = 0; at < length; at += blockSamples) {
      const int64_t n = std::min(blockSamples, length - at);
      vecRandGaussFill32f(noise.get(), reinterpret_cast<float*>(x + at), static_cast<int>(2 * n));
      ready.store(at + n, std::memory_order_release);
    }
  });
  CircularFilter filter(x, length, taps);
  filter.filterBehind(ready);
  producer.join();
  filter.finish(divisorFor);
}
