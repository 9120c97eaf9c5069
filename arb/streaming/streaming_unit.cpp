// SPDX-License-Identifier: MIT
// The streaming mode as a unit: view and its own block loop; it has no remote rows.
#include "arb/streaming/streaming_unit.h"

#include "arb/streaming/mode_view_streaming.h"
#include "modes/mode_host.h"
#include "modes/mode_registry.h"

#include <QMetaObject>

#include <algorithm>
#include <chrono>
#include <memory>
#include <thread>
#include <vector>

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

// Runs on the streaming thread: 40 ms blocks from file to file and round again, paced by the
// device's queue. The position crosses to the view by queued calls. Nothing is allocated in
// the loop.
void generateStreaming(const ModeViewStreaming& view, ModeHost& host) {
  const std::vector<StreamFileEntry> entries = view.getFileList();
  if (entries.empty()) return;
  std::vector<OpenFile> files;
  if (!openAll(entries, files) || files.empty()) return;
  if (std::none_of(files.begin(), files.end(),
                   [](const OpenFile& f) { return f.reader->sampleCount() > 0; }))
    return;  // nothing to play: the loop would only spin
  const double rate = view.sampleRate();
  const int blockSize = static_cast<int>(rate / 25.0);
  if (blockSize < 1) return;
  std::vector<Sample> block(static_cast<size_t>(blockSize));
  int64_t total = 0;
  for (const StreamFileEntry& e : entries) total += e.sampleCount;
  const float gain = static_cast<float>(view.iqScale() / 100.0);
  auto* target = const_cast<ModeViewStreaming*>(&view);

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
      const double percent = total > 0 ? position * 100.0 / total : 0.0;
      QMetaObject::invokeMethod(target, "setStreamingPos", Qt::QueuedConnection,
                                Q_ARG(double, percent));
    }
  }
  QMetaObject::invokeMethod(target, "stoppedStreaming", Qt::QueuedConnection);
}

}  // namespace

void registerStreamingMode(ModeRegistry& registry) {
  auto* view = new ModeViewStreaming;
  registry.addView(view);
  registry.setGenerator(view->modeIndex(),
                        [view](ModeHost& host) { generateStreaming(*view, host); });
}
