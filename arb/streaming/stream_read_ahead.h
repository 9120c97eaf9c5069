// SPDX-License-Identifier: MIT
// The streaming loop's reads, on a thread of their own two blocks ahead of the device.
#pragma once

#include "arb/iq_file_reader.h"

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

// One read of the walk from file to file, and where the walk went after it.
struct StreamStep {
  int got = 0;            // samples read, 0 for a file that read nothing
  bool nextFile = false;  // the file ended or read nothing: rewound, and the next one is due
  bool wrapped = false;   // past the last file: the first one is due again
};

// Walks the files in blocks of `blockSize` from the first to the last and round again, into two
// blocks in turn, so that a slow read of the disk is not a gap in the device's queue. Memory is
// the two blocks whatever the files' size; nothing is allocated after the start. The readers
// belong to the thread until it is destroyed, which stops and joins it.
class StreamReadAhead {
public:
  StreamReadAhead(std::vector<std::unique_ptr<IQFileReader>>& files, int blockSize);
  ~StreamReadAhead();
  StreamReadAhead(const StreamReadAhead&) = delete;
  StreamReadAhead& operator=(const StreamReadAhead&) = delete;

  // The next block and its step, or null when none came within `wait`; the block is the
  // caller's, to change in place, until release().
  Sample* take(StreamStep& step, std::chrono::milliseconds wait);
  void release();

private:
  struct Slot {
    std::vector<Sample> block;
    StreamStep step;
    bool full = false;
  };

  void run();
  StreamStep readStep(Sample* block);

  std::vector<std::unique_ptr<IQFileReader>>& files;
  const int blockSize;
  size_t file = 0, emptyReads = 0;  // the reading thread's own
  Slot buffers[2];
  int taken = 0;  // the slot the caller takes next
  std::mutex lock;
  std::condition_variable changed;
  bool stopped = false;
  std::thread thread;
};
