// SPDX-License-Identifier: MIT
// A sequence: waveform pieces, constant stretches and frequency hops played as one waveform,
// and its ".seq" file.
#pragma once

#include "dsp/sample.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

struct ArbSequenceEntry {
  enum Type { IQData = 0, Constant = 1, FreqChange = 2 };

  // A fresh id from the process-wide counter, and the name of the type.
  explicit ArbSequenceEntry(int type = IQData);

  int type = IQData;
  int id = 0;  // unique in the process: ties views and list rows to entries
  QString name;
  double frequency = 1e9;       // Hz, hops only
  Sample constant{0.0f, 0.0f};  // constants only
  int32_t constantLength = 0;   // samples, constants only
  QString fileName;             // the source file's name, for display; I/Q data only
  std::vector<Sample> samples;  // I/Q data only
  int32_t repetitions = 1;      // I/Q data only
};

// The expanded signal; a hop costs no sample, it sits at the end of the signal before it.
struct SequenceBuffer {
  struct Hop {
    int64_t index = 0;
    double frequency = 0.0;
  };
  std::vector<Sample> signal;
  std::vector<Hop> hops;
};

class ArbSequence {
public:
  enum class LoadResult { Loaded, NotOpened, InvalidFormat };

  // The allowance for one retune in `duration`.
  static constexpr double switchTime = 0.0002;  // s
  // The largest sequence the editor saves.
  static constexpr int64_t maxTotalSamples = 100000000;

  std::vector<std::unique_ptr<ArbSequenceEntry>>& entries() { return items; }
  const std::vector<std::unique_ptr<ArbSequenceEntry>>& entries() const { return items; }
  bool empty() const { return items.empty(); }
  void clear() { items.clear(); }
  ArbSequenceEntry* add(int type);
  ArbSequenceEntry* find(int id) const;
  void remove(int id);

  int freqChangeCount() const;
  // Data samples times their repetitions plus constant lengths, as the file states them.
  int64_t totalSamples() const;
  double duration(double sampleRate) const;

  // Clears the entries, then reads the file. An unknown tag makes an entry with default values
  // and reads nothing more for it; a truncated file gives entries with what was read.
  LoadResult load(const QString& path);
  // Writes the entries in the order of `order`'s ids, skipping ids not found.
  bool save(const QString& path, const std::vector<int>& order) const;
  // Expands the entries in order into `out`. A signal past maxTotalSamples (only a hand-made
  // file holds one) is not built: false, and `out` stays empty.
  bool build(SequenceBuffer& out) const;

private:
  std::vector<std::unique_ptr<ArbSequenceEntry>> items;
};
