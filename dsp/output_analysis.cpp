// SPDX-License-Identifier: MIT
// Figures of the output monitor: averaged spectrum, CCDF of power over mean, PAPR.
#include "dsp/output_analysis.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Power classes: 0.01 dB wide from -200 dBFS (zeros go there too) to +30 dBFS.
constexpr double kClassLowDbfs = -200.0;
constexpr double kClassesPerDb = 100.0;
constexpr int kClassCount = 23000;

int orderOfBins(int bins) {
  int order = 0;
  while ((1 << (order + 1)) <= bins) ++order;
  return order;
}

}  // namespace

std::vector<float> blackmanHarrisWindow(int n) {
  std::vector<float> w(static_cast<size_t>(std::max(n, 0)));
  const double a[4] = {0.35875, 0.48829, 0.14128, 0.01168};
  for (int k = 0; k < n; ++k) {
    const double x = 2.0 * M_PI * k / n;
    const double v = a[0] - a[1] * std::cos(x) + a[2] * std::cos(2 * x) - a[3] * std::cos(3 * x);
    w[static_cast<size_t>(k)] = static_cast<float>(v);
  }
  return w;
}

// ---- Spectrum -------------------------------------------------------------------------------

void SpectrumAverager::setBins(int bins) {
  const int order = orderOfBins(std::clamp(bins, minBins, maxBins));
  if (n == (1 << order)) return;
  n = 1 << order;
  fft = vecFftCreate(order, VecFftNoScale, 0);
  window = blackmanHarrisWindow(n);
  work.assign(static_cast<size_t>(n), Sample());
  reset();
}

void SpectrumAverager::setAverages(int count) { averages = std::clamp(count, 1, 1000); }

void SpectrumAverager::reset() {
  power.assign(static_cast<size_t>(n), 0.0);
  updates = 0;
}

void SpectrumAverager::add(const Sample* samples, int count) {
  if (!fft || !samples || count < 1) return;
  std::vector<double> block(static_cast<size_t>(n), 0.0);
  int segments = 0;
  if (count < n) {
    const std::vector<float> shortWindow = blackmanHarrisWindow(count);
    addSegment(samples, count, shortWindow, block);
    segments = 1;
  } else {
    for (int start = 0; start + n <= count; start += n / 2, ++segments)
      addSegment(samples + start, n, window, block);
  }
  ++updates;
  const double alpha = 1.0 / static_cast<double>(std::min<int64_t>(updates, averages));
  for (int k = 0; k < n; ++k) {
    const size_t i = static_cast<size_t>(k);
    power[i] += alpha * (block[i] / segments - power[i]);
  }
}

// Adds |FFT(x w)|^2 / (sum w)^2 of one segment, zero-padded to n, to `sum`.
void SpectrumAverager::addSegment(const Sample* samples, int count, const std::vector<float>& w,
                                  std::vector<double>& sum) {
  double gain = 0.0;
  for (int k = 0; k < count; ++k) {
    work[static_cast<size_t>(k)] = samples[k] * w[static_cast<size_t>(k)];
    gain += w[static_cast<size_t>(k)];
  }
  std::fill(work.begin() + count, work.end(), Sample());
  vecFftForward32fc(work.data(), work.data(), fft.get());
  const double scale = gain > 0.0 ? 1.0 / (gain * gain) : 0.0;
  for (int k = 0; k < n; ++k)
    sum[static_cast<size_t>(k)] += std::norm(work[static_cast<size_t>(k)]) * scale;
}

std::vector<float> SpectrumAverager::levelsDbfs() const {
  std::vector<float> levels(static_cast<size_t>(n));
  for (int k = 0; k < n; ++k) {
    // Negative frequencies first: FFT bin k + n/2 is display index k.
    const double p = power[static_cast<size_t>((k + n / 2) % n)];
    levels[static_cast<size_t>(k)] = p > 0.0 ? static_cast<float>(10.0 * std::log10(p)) : -300.0f;
  }
  return levels;
}

double SpectrumAverager::noiseBandwidthBins() const {
  double sum = 0.0, sumOfSquares = 0.0;
  for (float v : window) {
    sum += v;
    sumOfSquares += static_cast<double>(v) * v;
  }
  return sum > 0.0 ? window.size() * sumOfSquares / (sum * sum) : 0.0;
}

// ---- CCDF -----------------------------------------------------------------------------------

CcdfAccumulator::CcdfAccumulator() : classes(kClassCount, 0) {}

void CcdfAccumulator::reset() {
  std::fill(classes.begin(), classes.end(), 0);
  total = 0;
  powerSum = 0.0;
}

void CcdfAccumulator::add(const Sample* samples, int count) {
  if (!samples) return;
  for (int k = 0; k < count; ++k) {
    const float p = std::norm(samples[k]);
    powerSum += p;
    const double c = p > 0.0f ? (10.0 * std::log10(p) - kClassLowDbfs) * kClassesPerDb : 0.0;
    // NaN samples land in the lowest class rather than past the end.
    const int index = c > 0.0 ? static_cast<int>(std::min(c, kClassCount - 1.0)) : 0;
    ++classes[static_cast<size_t>(index)];
  }
  total += std::max(count, 0);
}

double CcdfAccumulator::meanPowerDbfs() const {
  if (total == 0 || !(powerSum > 0.0)) return -std::numeric_limits<double>::infinity();
  return 10.0 * std::log10(powerSum / static_cast<double>(total));
}

double CcdfAccumulator::levelAtProbability(double fraction) const {
  const double mean = meanPowerDbfs();
  if (!std::isfinite(mean)) return std::numeric_limits<double>::quiet_NaN();
  const double allowed = fraction * static_cast<double>(total);
  int64_t above = 0;
  int c = kClassCount - 1;
  for (; c > 0; --c) {
    if (static_cast<double>(above + classes[static_cast<size_t>(c)]) > allowed) break;
    above += classes[static_cast<size_t>(c)];
  }
  // The middle of the class where the count above passes the fraction.
  return kClassLowDbfs + (c + 0.5) / kClassesPerDb - mean;
}

int CcdfAccumulator::classAbove(double dbOverMean) const {
  const double c = (meanPowerDbfs() + dbOverMean - kClassLowDbfs) * kClassesPerDb;
  return static_cast<int>(std::clamp(std::ceil(c), 0.0, double(kClassCount)));
}

std::vector<std::pair<double, double>> CcdfAccumulator::curve() const {
  std::vector<std::pair<double, double>> points;
  const double mean = meanPowerDbfs();
  if (!std::isfinite(mean)) return points;
  int top = kClassCount - 1;
  while (top > 0 && classes[static_cast<size_t>(top)] == 0) --top;
  // Counts above each class from the top down, then read from 0 dB upwards.
  const int first = classAbove(0.0);
  int64_t above = 0;
  std::vector<int64_t> aboveFrom(static_cast<size_t>(std::max(top - first + 1, 0)));
  for (int c = top; c >= first; --c) {
    above += classes[static_cast<size_t>(c)];
    aboveFrom[static_cast<size_t>(c - first)] = above;
  }
  for (int c = first; c <= top; ++c) {
    const double db = kClassLowDbfs + c / kClassesPerDb - mean;
    points.emplace_back(db, 100.0 * aboveFrom[static_cast<size_t>(c - first)] / total);
  }
  return points;
}
