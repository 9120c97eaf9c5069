// SPDX-License-Identifier: MIT
// Pure builder of the multitone comb: rate, buffer length, tone frequencies and phases, samples.
#include "modes/multitone/multitone_builder.h"

#include "dsp/fftw_plan.h"
#include "dsp/vec_arith.h"
#include "dsp/vec_random.h"
#include "dsp/vec_status.h"
#include "dsp/vec_tone.h"

#include <algorithm>
#include <cmath>
#include <new>

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr int64_t kPeriodsPerBuffer = 512;  // L / (2 j)

// Shows the progress dialog for a long build and makes sure it is hidden again on every way
// out, including an abandoned build.
class ProgressBracket {
public:
  ProgressBracket(const MultitoneProgress& progress, int toneCount)
      : progress(progress),
        active(toneCount > multitoneProgressThreshold),
        step(std::max(toneCount / 20, 1)),
        toneCount(toneCount) {
    if (active && progress.show) progress.show();
  }
  ~ProgressBracket() { hide(); }
  ProgressBracket(const ProgressBracket&) = delete;
  ProgressBracket& operator=(const ProgressBracket&) = delete;

  void tone(int i) const {
    if (active && i % step == 0 && progress.percent)
      progress.percent(static_cast<int>(double(i) / double(toneCount) * 100.0));
  }
  void hide() {
    if (active && progress.hide) progress.hide();
    active = false;
  }

private:
  const MultitoneProgress& progress;
  bool active;
  int step;
  int toneCount;
};

bool keepGoing(const MultitoneProgress& progress) {
  return !progress.keepGoing || progress.keepGoing();
}

// Strict comparison: with no notch no tone is left out, and a tone on the edge stays.
bool inNotch(double halfNotch, float frequency) { return halfNotch > std::fabs(frequency); }

// Greatest magnitude, in float as the device sees the samples.
float peakMagnitude(const Sample* samples, int64_t n) {
  float peak = 0.0f;
  for (int64_t i = 0; i < n; ++i) {
    const float re = samples[i].real(), im = samples[i].imag();
    peak = std::max(peak, std::sqrt(re * re + im * im));
  }
  return peak;
}

// Divides I and Q by the peak; a zero peak (all tones notched) leaves the zeros as they are.
void normalisePeak(Sample* samples, int64_t n) {
  float* values = reinterpret_cast<float*>(samples);
  vecDivC32f(values, peakMagnitude(samples, n), values, static_cast<int>(2 * n));
}

// Bin of tone i in a DFT of one period (2 j points): i - h cycles a period for N odd,
// 2 (i - h) + 1 for N even.
int64_t toneBin(int i, int toneCount, int64_t period) {
  const int64_t k = int64_t(i) - toneCount / 2;
  const int64_t bin = toneCount % 2 == 1 ? k : 2 * k + 1;
  return ((bin % period) + period) % period;
}

// Unscaled inverse DFT, so that a bin of magnitude 1 becomes a tone of magnitude 1.
bool inverseDft(std::vector<Sample>& spectrum, std::vector<Sample>& out) {
  auto* in = reinterpret_cast<fftwf_complex*>(spectrum.data());
  auto* dst = reinterpret_cast<fftwf_complex*>(out.data());
  fftwf_plan plan = fftwPlanDft(static_cast<int>(spectrum.size()), in, dst, FFTW_BACKWARD);
  if (!plan) return false;
  fftwf_execute(plan);
  fftwDestroyPlan(plan);
  return true;
}

// What both builds need before the first tone.
struct CombPlan {
  MultitoneGrid grid;
  std::vector<float> frequencies;  // cycles per sample, rounded to float
  std::vector<float> phases;       // radians
  double halfNotch = 0.0;          // cycles per sample
};

bool planComb(const MultitoneSettings& settings, CombPlan& plan) {
  plan.grid = multitoneGrid(settings.toneCount, settings.spacingHz);
  if (!plan.grid.valid) return false;
  plan.frequencies = multitoneFrequencies(plan.grid, settings.toneCount, settings.spacingHz);
  plan.phases = multitonePhases(settings.phase, settings.toneCount, settings.seed);
  plan.halfNotch = settings.notchWidthHz * 0.5 / plan.grid.sampleRate;
  return true;
}

Waveform buildFromSpectrum(const MultitoneSettings& settings, const MultitoneProgress& progress) {
  CombPlan plan;
  if (!planComb(settings, plan)) return {};
  const int n = settings.toneCount;
  const int64_t period = plan.grid.period();

  std::vector<Sample> spectrum(static_cast<size_t>(period));
  ProgressBracket bracket(progress, n);
  for (int i = 0; i < n; ++i) {
    if (!keepGoing(progress)) return {};
    if (inNotch(plan.halfNotch, plan.frequencies[i])) continue;
    const double phase = plan.phases[i];
    spectrum[toneBin(i, n, period)] += Sample(float(std::cos(phase)), float(std::sin(phase)));
    bracket.tone(i);
  }
  bracket.hide();

  std::vector<Sample> one(static_cast<size_t>(period));
  if (!keepGoing(progress) || !inverseDft(spectrum, one)) return {};
  normalisePeak(one.data(), period);

  Waveform wave;
  wave.sampleRate = plan.grid.sampleRate;
  // The mean of whole repetitions is the mean of one.
  wave.levelOffsetDb = meanPowerDb(one.data(), period);
  wave.samples.reserve(static_cast<size_t>(plan.grid.length));
  for (int64_t p = 0; p < kPeriodsPerBuffer; ++p)
    wave.samples.insert(wave.samples.end(), one.begin(), one.end());
  return wave;
}

Waveform buildByTones(const MultitoneSettings& settings, const MultitoneProgress& progress) {
  CombPlan plan;
  if (!planComb(settings, plan)) return {};
  const int n = settings.toneCount;
  const int length = static_cast<int>(plan.grid.length);

  std::vector<Sample> sum(static_cast<size_t>(length)), tone(static_cast<size_t>(length));
  ProgressBracket bracket(progress, n);
  for (int i = 0; i < n; ++i) {
    if (!keepGoing(progress)) return {};
    float frequency = plan.frequencies[i];
    if (inNotch(plan.halfNotch, frequency)) continue;
    if (frequency < 0.0f) frequency += 1.0f;  // the tone kernel takes 0 to 1
    float phase = plan.phases[i];
    vecTone32fc(tone.data(), length, 1.0f, frequency, &phase, VecHintAccurate);
    vecAdd32fc(sum.data(), tone.data(), sum.data(), length);
    bracket.tone(i);
  }
  bracket.hide();
  normalisePeak(sum.data(), length);

  // Whole copies until a hundredth of a second, over which the mean is taken; only L plays.
  const double hundredth = std::min(plan.grid.sampleRate / 100.0, double(multitoneMaxLength));
  const auto minimum = static_cast<size_t>(hundredth);
  while (sum.size() < minimum) {
    const auto size = static_cast<std::ptrdiff_t>(sum.size());
    sum.resize(2 * sum.size());
    std::copy(sum.begin(), sum.begin() + size, sum.begin() + size);
  }
  Waveform wave;
  wave.sampleRate = plan.grid.sampleRate;
  wave.levelOffsetDb = meanPowerDb(sum.data(), static_cast<int64_t>(sum.size()));
  sum.resize(static_cast<size_t>(length));
  wave.samples = std::move(sum);
  return wave;
}

}  // namespace

MultitoneGrid multitoneGrid(int toneCount, double spacingHz) {
  MultitoneGrid grid;
  const double d = spacingHz;
  if (toneCount < 1 || !(d > 0.0) || !std::isfinite(d)) return grid;
  // Bounds the search too: a spacing so small that D / 2 is zero would never end it.
  const int64_t maxJ = multitoneMaxLength / 1024;
  const int64_t h = toneCount / 2;
  int64_t j = 0;
  double rate = 0.0;
  if (toneCount % 2 == 1) {
    j = h + 1;
    while (j <= maxJ && double(j) * d < double(h) * d * 1.25) ++j;
    rate = double(2 * j) * d;
  } else {
    const double e = d / 2.0;
    j = toneCount - 1;
    while (j <= maxJ && double(j) * e < (double(h) * d - e) * 1.25) ++j;
    rate = double(2 * j) * e;
  }
  if (j > maxJ || !std::isfinite(rate) || !(rate > 0.0)) return grid;
  grid.valid = true;
  grid.j = j;
  grid.sampleRate = rate;
  grid.length = j * 1024;
  return grid;
}

std::vector<float> multitoneFrequencies(const MultitoneGrid& grid, int toneCount,
                                        double spacingHz) {
  std::vector<float> frequencies(static_cast<size_t>(std::max(toneCount, 0)));
  const int h = toneCount / 2;
  const double d = spacingHz, s = grid.sampleRate;
  for (int i = 0; i < toneCount; ++i) {
    const double f =
        toneCount % 2 == 1 ? (double(i - h) * d) / s : (double(i - h) * d + d * 0.5) / s;
    frequencies[i] = static_cast<float>(f);
  }
  return frequencies;
}

std::vector<float> multitonePhases(int phaseLaw, int toneCount, int seed) {
  std::vector<float> phases(static_cast<size_t>(std::max(toneCount, 0)), 0.0f);
  if (toneCount < 1) return phases;
  if (phaseLaw == MultiTonePhaseRandom) {
    vecRandUniform32f(phases.data(), toneCount, 0.0f, 6.2831855f, static_cast<unsigned int>(seed));
  } else if (phaseLaw == MultiTonePhaseParabolic) {
    // A quadratic phase law keeps the crest factor of the comb low.
    const int64_t h = toneCount / 2;
    for (int i = 0; i < toneCount; ++i) {
      const double k1 = double(int64_t(i) - h - 1);
      const float p = static_cast<float>(k1 * kPi * k1 / double(toneCount) + kPi / 4.0);
      phases[i] = static_cast<float>(std::fmod(double(p), 2.0 * kPi));
    }
  }
  return phases;
}

Waveform buildMultitone(const MultitoneSettings& settings, const MultitoneProgress& progress) {
  try {
    return buildFromSpectrum(settings, progress);
  } catch (const std::bad_alloc&) {
    return {};
  }
}

Waveform buildMultitoneDirect(const MultitoneSettings& settings,
                              const MultitoneProgress& progress) {
  try {
    return buildByTones(settings, progress);
  } catch (const std::bad_alloc&) {
    return {};
  }
}
