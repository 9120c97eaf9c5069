// SPDX-License-Identifier: MIT
// The streaming mode's block loop, free of the view: files played back to back without end.
#include "arb/streaming/streaming_player.h"

#include "arb/binary_file_16sc.h"
#include "arb/binary_file_32fc.h"
#include "arb/sigmf_reader.h"
#include "arb/wav_reader.h"
#include "modes/mode_host.h"

#include <algorithm>
#include <chrono>
#include <thread>

namespace {

struct OpenFile {
  std::unique_ptr<IQFileReader> reader;
};

using Clock = std::chrono::steady_clock;
// The position is shown at most this often: a list of tiny files makes tiny blocks.
constexpr auto positionInterval = std::chrono::milliseconds(20);

// The readers of the entries in play order; an entry whose file no longer opens is left out.
// False for a type no reader has, which ends the generator.
bool openAll(const std::vector<StreamFileEntry>& entries, std::vector<OpenFile>& files) {
  for (const StreamFileEntry& entry : entries) {
    std::unique_ptr<IQFileReader> reader = streamReaderFor(entry.fileType);
    if (!reader) return false;
    if (reader->open(entry.path)) files.push_back({std::move(reader)});
  }
  return true;
}

}  // namespace

std::unique_ptr<IQFileReader> streamReaderFor(int fileType) {
  switch (fileType) {
    case 2: return std::make_unique<BinaryFile16sc>();
    case 3: return std::make_unique<BinaryFile32fc>();
    case 7: return std::make_unique<WavReader>();
    case 9: return std::make_unique<SigMFReader>();
    default: return nullptr;
  }
}

bool playStreamingFiles(const std::vector<StreamFileEntry>& entries, double sampleRate,
                        double iqScalePercent, ModeHost& host,
                        const std::function<void(double percent)>& showPosition) {
  if (entries.empty()) return false;
  std::vector<OpenFile> files;
  if (!openAll(entries, files) || files.empty()) return false;
  if (std::none_of(files.begin(), files.end(),
                   [](const OpenFile& f) { return f.reader->sampleCount() > 0; }))
    return false;  // nothing to play: the loop would only spin
  const double rate = sampleRate;
  const int blockSize = static_cast<int>(rate / 25.0);
  if (blockSize < 1) return false;
  std::vector<Sample> block(static_cast<size_t>(blockSize));
  int64_t total = 0;
  for (const StreamFileEntry& e : entries) total += e.sampleCount;
  const float gain = static_cast<float>(iqScalePercent / 100.0);

  host.retune(rate);
  host.prepareNoise(0.0, rate);
  host.setOutputReady();
  size_t i = 0, emptyReads = 0;
  int64_t position = 0;
  Clock::time_point shown = Clock::now() - positionInterval;
  while (host.isStreaming()) {
    IQFileReader& reader = *files[i].reader;
    const int n = static_cast<int>(std::min<int64_t>(blockSize, reader.samplesRemaining()));
    const int got =
        n > 0 ? static_cast<int>(std::max<int64_t>(reader.read(block.data(), n), 0)) : 0;
    if (gain != 1.0f)
      for (int k = 0; k < got; ++k)
        block[k] = Sample(block[k].real() * gain, block[k].imag() * gain);
    if (got > 0) {
      host.processImpairments(block.data(), block.data(), got);  // in place: one block of memory
      host.submitIQ(block.data(), got);
      if (host.connectionLost()) break;
    }
    // Files that vanished while playing read nothing: a whole round of them waits a little
    // instead of spinning.
    emptyReads = got > 0 ? 0 : emptyReads + 1;
    if (emptyReads >= files.size()) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
      emptyReads = 0;
    }
    if (reader.samplesRemaining() < 1 || got < 1) {
      reader.rewind();
      if (++i == files.size()) {
        i = 0;
        position = 0;
      }
    } else {
      position += got;
    }
    if (Clock::now() - shown >= positionInterval) {
      shown = Clock::now();
      showPosition(total > 0 ? position * 100.0 / total : 0.0);
    }
  }
  return true;
}
