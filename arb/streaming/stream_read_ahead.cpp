// SPDX-License-Identifier: MIT
// The streaming loop's reads, on a thread of their own two blocks ahead of the device.
#include "arb/streaming/stream_read_ahead.h"

#include <pthread.h>

#include <algorithm>

StreamReadAhead::StreamReadAhead(std::vector<std::unique_ptr<IQFileReader>>& files,
                                 int blockSize)
    : files(files), blockSize(blockSize) {
  for (Slot& slot : buffers) slot.block.resize(static_cast<size_t>(blockSize));
  thread = std::thread([this] { run(); });
  pthread_setname_np(thread.native_handle(), "Stream ReadAhd");  // at most 15 characters
}

StreamReadAhead::~StreamReadAhead() {
  {
    const std::lock_guard<std::mutex> hold(lock);
    stopped = true;
  }
  changed.notify_all();
  thread.join();
}

Sample* StreamReadAhead::take(StreamStep& step, std::chrono::milliseconds wait) {
  std::unique_lock<std::mutex> hold(lock);
  Slot& slot = buffers[taken];
  if (!changed.wait_for(hold, wait, [&] { return slot.full; })) return nullptr;
  step = slot.step;
  return slot.block.data();
}

void StreamReadAhead::release() {
  {
    const std::lock_guard<std::mutex> hold(lock);
    buffers[taken].full = false;
    taken ^= 1;
  }
  changed.notify_all();
}

void StreamReadAhead::run() {
  for (int k = 0;; k ^= 1) {
    {
      std::unique_lock<std::mutex> hold(lock);
      changed.wait(hold, [&] { return !buffers[k].full || stopped; });
      if (stopped) return;
    }
    const StreamStep step = readStep(buffers[k].block.data());
    {
      const std::lock_guard<std::mutex> hold(lock);
      buffers[k].step = step;
      buffers[k].full = true;
    }
    changed.notify_all();
  }
}

StreamStep StreamReadAhead::readStep(Sample* block) {
  IQFileReader& reader = *files[file];
  const int n = static_cast<int>(std::min<int64_t>(blockSize, reader.samplesRemaining()));
  StreamStep step;
  step.got = n > 0 ? static_cast<int>(std::max<int64_t>(reader.read(block, n), 0)) : 0;
  // Files that vanished while playing read nothing: a whole round of them waits a little
  // instead of spinning.
  emptyReads = step.got > 0 ? 0 : emptyReads + 1;
  if (emptyReads >= files.size()) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
    emptyReads = 0;
  }
  if (reader.samplesRemaining() < 1 || step.got < 1) {
    reader.rewind();
    step.nextFile = true;
    if (++file == files.size()) {
      file = 0;
      step.wrapped = true;
    }
  }
  return step;
}
