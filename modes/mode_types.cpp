// SPDX-License-Identifier: MIT
// Item texts of the shared mode enumerations, and the storage of long builds.
#include "modes/mode_types.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <new>
#include <utility>

const char* const modShapeTexts[4] = {"Sine", "Square", "Triangle", "Ramp"};
const char* const triggerTypeTexts[2] = {"Continuous", "Single"};
const char* const stepSweepTypeTexts[2] = {"Freq", "Freq & Ampl"};

namespace {

constexpr size_t hugePageBytes = size_t(2) << 20;

size_t roundUp(size_t bytes, size_t unit) { return (bytes + unit - 1) / unit * unit; }

size_t pageBytes() { return static_cast<size_t>(sysconf(_SC_PAGESIZE)); }

// Anonymous memory, which the system zero-fills on first touch. From one huge page up the
// start is aligned to a huge page so that the whole block can be backed by them.
void* mapZeroed(size_t bytes) {
  const bool huge = bytes >= hugePageBytes;
  const size_t span = huge ? bytes + hugePageBytes : bytes;
  void* base = mmap(nullptr, span, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (base == MAP_FAILED) throw std::bad_alloc();
  if (!huge) return base;
  const uintptr_t first = reinterpret_cast<uintptr_t>(base);
  const uintptr_t start = (first + hugePageBytes - 1) & ~(uintptr_t(hugePageBytes) - 1);
  const size_t head = start - first;
  if (head > 0) munmap(base, head);
  if (span - head > bytes) munmap(reinterpret_cast<void*>(start + bytes), span - head - bytes);
#ifdef MADV_HUGEPAGE
  madvise(reinterpret_cast<void*>(start), bytes, MADV_HUGEPAGE);
#endif
  return reinterpret_cast<void*>(start);
}

}  // namespace

SampleBuffer::SampleBuffer(int64_t n) {
  if (n < 1) return;
  mappedBytes = roundUp(static_cast<size_t>(n) * sizeof(Sample), pageBytes());
  samples = static_cast<Sample*>(mapZeroed(mappedBytes));
  count = n;
}

SampleBuffer::~SampleBuffer() { release(); }

SampleBuffer::SampleBuffer(SampleBuffer&& other) noexcept
    : samples(std::exchange(other.samples, nullptr)),
      count(std::exchange(other.count, 0)),
      mappedBytes(std::exchange(other.mappedBytes, 0)) {}

SampleBuffer& SampleBuffer::operator=(SampleBuffer&& other) noexcept {
  if (this != &other) {
    release();
    samples = std::exchange(other.samples, nullptr);
    count = std::exchange(other.count, 0);
    mappedBytes = std::exchange(other.mappedBytes, 0);
  }
  return *this;
}

void SampleBuffer::release() {
  if (samples) munmap(samples, mappedBytes);
  samples = nullptr;
  count = 0;
  mappedBytes = 0;
}

void reserveSamples(std::vector<Sample>& samples, int64_t count) {
  if (count < 1) return;
  samples.reserve(static_cast<size_t>(count));
#ifdef MADV_POPULATE_WRITE
  const uintptr_t begin = reinterpret_cast<uintptr_t>(samples.data()) & ~(pageBytes() - 1);
  const uintptr_t end = reinterpret_cast<uintptr_t>(samples.data() + samples.capacity());
  // Older kernels refuse the advice, and the pages then come by faults as usual.
  if (end - begin >= hugePageBytes)
    madvise(reinterpret_cast<void*>(begin), end - begin, MADV_POPULATE_WRITE);
#endif
}

double meanPowerDb(const Sample* samples, int64_t n) {
  double sum = 0.0;
  for (int64_t i = 0; i < n; ++i) {
    const double re = samples[i].real(), im = samples[i].imag();
    sum += re * re + im * im;
  }
  return 10.0 * std::log10(sum / double(n));
}
