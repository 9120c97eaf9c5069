// SPDX-License-Identifier: MIT
// Figures of the output monitor: averaged spectrum, CCDF of power over mean, PAPR.
#pragma once

#include "dsp/sample.h"
#include "dsp/vec_fft.h"

#include <cstdint>
#include <utility>
#include <vector>

// Four-term Blackman-Harris window of n points (-92 dB side lobes), periodic form.
std::vector<float> blackmanHarrisWindow(int n);

// Averaged periodogram in dB relative to full scale: a full-scale tone (magnitude 1) on a bin
// reads 0 dBFS, so tone levels read directly; noise reads its power in one bin's noise
// bandwidth (`noiseBandwidthBins` bins wide).
class SpectrumAverager {
public:
  static constexpr int minBins = 1024;
  static constexpr int maxBins = 16384;

  // bins: a power of two, clamped to minBins..maxBins. Clears the average.
  void setBins(int bins);
  int bins() const { return n; }
  // Updates averaged together, exponentially, 1 (no averaging) to 1000.
  void setAverages(int count);
  void reset();

  // One update: the mean of the periodograms of the block's half-overlapping segments; a block
  // shorter than one segment is zero-padded, its window taken as long as the block.
  void add(const Sample* samples, int count);
  bool hasData() const { return updates > 0; }
  // Bin levels in dBFS from -rate/2 up (DC at index bins/2).
  std::vector<float> levelsDbfs() const;
  double noiseBandwidthBins() const;

private:
  void addSegment(const Sample* samples, int count, const std::vector<float>& w,
                  std::vector<double>& sum);

  int n = 0;
  int averages = 10;
  int64_t updates = 0;
  VecStatePtr<VecFft> fft;
  std::vector<float> window;
  std::vector<Sample> work;
  std::vector<double> power;  // averaged, linear, in FFT order
};

// Distribution of instantaneous power accumulated over every sample given since the last reset,
// in 0.01 dB classes.
class CcdfAccumulator {
public:
  CcdfAccumulator();
  void reset();
  void add(const Sample* samples, int count);
  int64_t count() const { return total; }
  // Mean power in dBFS; -inf with no samples or only zeros.
  double meanPowerDbfs() const;
  // dB over mean power that the given fraction of samples (0.0001 for 0.01 %) exceeds: the
  // CCDF read backwards. NaN without samples.
  double levelAtProbability(double fraction) const;
  // PAPR as instrument users quote it: the level only 0.01 % of the samples exceed.
  double paprDb() const { return levelAtProbability(1e-4); }
  // (dB over mean, percent of samples above it), from 0 dB up to the highest class reached.
  std::vector<std::pair<double, double>> curve() const;

private:
  int classAbove(double dbOverMean) const;

  std::vector<int64_t> classes;
  int64_t total = 0;
  double powerSum = 0.0;
};
