// SPDX-License-Identifier: MIT
// Finishing of a built WLAN frame: blending of symbol joins and RMS level normalisation.
#include "wireless/frame_shaping.h"

#include "dsp/vec_reduce.h"
#include "dsp/vec_status.h"

#include <cmath>

namespace {

int windowSize(int windowLength) {
  int w = windowLength;
  if (w % 2) ++w;
  return w >= 17 ? 16 : w;
}

// Rises from 0 to 1 over W samples.
std::vector<float> risingWindow(int w) {
  std::vector<float> rise(static_cast<size_t>(w));
  for (int i = 0; i < w; ++i)
    rise[i] = static_cast<float>(0.5 * std::cos(M_PI * i / (w - 1) + M_PI) + 0.5);
  return rise;
}

void blendJoin(ComplexVector& out, long long p, int n, const std::vector<float>& rise) {
  const long long w = static_cast<long long>(rise.size());
  const long long h = w / 2;
  const long long start = p - h;
  if (start - n < 0 || start + n + w > static_cast<long long>(out.size())) return;
  for (long long i = 0; i < w; ++i) {
    const Sample a = out[start - n + i];
    const Sample b = out[start + n + i];
    out[start + i] = a * rise[w - 1 - i] + b * rise[i];
  }
}

}  // namespace

ComplexVector smoothSymbolJoins(const ComplexVector& frame, int fftSize, int preambleSlots,
                                int dataSymbols, bool shortGuard, int windowLength) {
  ComplexVector out = frame;
  const int w = windowSize(windowLength);
  if (w < 1) return out;
  const std::vector<float> rise = risingWindow(w);
  const long long slot = fftSize + fftSize / 4;
  const long long step = shortGuard ? fftSize + fftSize / 8 : slot;
  for (long long s = 1; s < preambleSlots; ++s) blendJoin(out, s * slot, fftSize, rise);
  for (long long i = 0; i < dataSymbols; ++i)
    blendJoin(out, slot * preambleSlots + i * step, fftSize, rise);
  // The fade-out; a frame shorter than it has no joins either and is left as it is.
  const size_t h = static_cast<size_t>(w / 2);
  if (out.size() < h) return out;
  for (size_t i = 0; i < h; ++i) out[out.size() - h + i] *= rise[w - 1 - i];
  return out;
}

ComplexVector normaliseRms(const ComplexVector& frame, double levelDb) {
  ComplexVector out = frame;
  const int n = static_cast<int>(frame.size());
  if (n < 1) return out;
  std::vector<float> power(frame.size());
  for (size_t i = 0; i < frame.size(); ++i) power[i] = std::norm(frame[i]);
  float sum = 0.0f;
  vecSum32f(power.data(), n, &sum, VecHintAccurate);
  const float rms = std::sqrt(sum / static_cast<float>(n));
  if (!(rms > 0.0f)) return out;
  const float gain = 1.0f / (rms / static_cast<float>(std::pow(10.0, levelDb / 20.0)));
  for (Sample& s : out) s *= gain;
  return out;
}

void appendIdleSamples(ComplexVector& frame, double idleSeconds, double sampleRate) {
  const double count = std::trunc(idleSeconds / (1.0 / sampleRate));
  if (!(count > 0.0) || !std::isfinite(count)) return;
  frame.resize(frame.size() + static_cast<size_t>(count), Sample(0.0f, 0.0f));
}
