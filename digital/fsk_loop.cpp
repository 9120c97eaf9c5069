// SPDX-License-Identifier: MIT
// Continuous FSK: repetitions rotated onto each other so that the phase never jumps.
#include "digital/fsk_loop.h"

#include <cmath>

float phaseOf(Sample sample) { return std::atan2(sample.imag(), sample.real()); }

void rotateSamples(const Sample* src, Sample* dst, int64_t count, float phase) {
  const float c = std::cos(phase), s = std::sin(phase);
  // Written out: std::complex's product checks for infinities sample by sample.
  for (int64_t i = 0; i < count; ++i) {
    const float re = src[i].real(), im = src[i].imag();
    dst[i] = Sample(re * c - im * s, re * s + im * c);
  }
}

std::vector<Sample> fskLoopBuffer(const std::vector<Sample>& record, double sampleRateHz) {
  const size_t length = record.size();
  if (length == 0) return {};
  const double minimum = sampleRateHz / 100.0;
  size_t size = length;
  while (static_cast<double>(size) < std::trunc(minimum)) size *= 2;
  std::vector<Sample> buffer(size);
  std::copy(record.begin(), record.end(), buffer.begin());
  for (size_t start = length; start < size; start += length)
    rotateSamples(record.data(), &buffer[start], static_cast<int64_t>(length),
                  phaseOf(buffer[start - 1]));
  return buffer;
}
