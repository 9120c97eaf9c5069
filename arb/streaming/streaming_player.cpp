// SPDX-License-Identifier: MIT
// The streaming mode's block loop, free of the view: files played back to back without end.
#include "arb/streaming/streaming_player.h"

#include "arb/iq_file_loading.h"
#include "arb/streaming/stream_read_ahead.h"
#include "modes/mode_host.h"

#include <algorithm>
#include <chrono>

namespace {

using Clock = std::chrono::steady_clock;
// The position is shown at most this often: a list of tiny files makes tiny blocks.
constexpr auto positionInterval = std::chrono::milliseconds(20);
// How long a wait for the reads goes before the run flag is looked at again.
constexpr auto runFlagPoll = std::chrono::milliseconds(10);

// The readers of the entries in play order; an entry whose file no longer opens is left out.
// False for a type no reader has, which ends the generator.
bool openAll(const std::vector<StreamFileEntry>& entries,
             std::vector<std::unique_ptr<IQFileReader>>& files) {
  for (const StreamFileEntry& entry : entries) {
    std::unique_ptr<IQFileReader> reader = streamReaderFor(entry.fileType);
    if (!reader) return false;
    if (reader->open(entry.path)) files.push_back(std::move(reader));
  }
  return true;
}

}  // namespace

bool playStreamingFiles(const std::vector<StreamFileEntry>& entries, double sampleRate,
                        double iqScalePercent, ModeHost& host,
                        const std::function<void(double percent)>& showPosition) {
  if (entries.empty()) return false;
  std::vector<std::unique_ptr<IQFileReader>> files;
  if (!openAll(entries, files) || files.empty()) return false;
  if (std::none_of(files.begin(), files.end(),
                   [](const std::unique_ptr<IQFileReader>& f) { return f->sampleCount() > 0; }))
    return false;  // nothing to play: the loop would only spin
  const double rate = sampleRate;
  const int blockSize = static_cast<int>(rate / 25.0);
  if (blockSize < 1) return false;
  int64_t total = 0;
  for (const StreamFileEntry& e : entries) total += e.sampleCount;
  const float gain = static_cast<float>(iqScalePercent / 100.0);

  host.retune(rate);
  host.prepareNoise(0.0, rate);
  host.setOutputReady();
  StreamReadAhead ahead(files, blockSize);
  int64_t position = 0;
  Clock::time_point shown = Clock::now() - positionInterval;
  while (host.isStreaming()) {
    StreamStep step;
    Sample* block = ahead.take(step, runFlagPoll);
    if (!block) continue;  // the disk is slow: look at the run flag meanwhile
    const int got = step.got;
    if (gain != 1.0f)
      for (int k = 0; k < got; ++k)
        block[k] = Sample(block[k].real() * gain, block[k].imag() * gain);
    if (got > 0) {
      host.processImpairments(block, block, got);  // in place: no block beyond the two
      host.submitIQ(block, got);
      if (host.connectionLost()) break;
    }
    ahead.release();
    if (step.wrapped)
      position = 0;
    else if (!step.nextFile)
      position += got;
    if (Clock::now() - shown >= positionInterval) {
      shown = Clock::now();
      showPosition(total > 0 ? position * 100.0 / total : 0.0);
    }
  }
  return true;
}
