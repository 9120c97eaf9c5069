// SPDX-License-Identifier: MIT
// Whole files read into memory, for the arb mode and the sequence editor.
#include "arb/iq_file_loading.h"

#include "arb/binary_file_16sc.h"
#include "arb/binary_file_32fc.h"
#include "arb/csv_file_reader.h"
#include "arb/midas_blue_file.h"
#include "arb/sigmf_reader.h"
#include "arb/wav_reader.h"

#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace {

constexpr int readBlock = 1 << 20;  // samples a read

// Maps the pages of [from, from + count) for writing before the copy reaches them: one call
// that the kernel serves in bulk costs far less than a fault a page, and it runs while the
// reading thread waits on the disk. A kernel that doesn't know the advice refuses it, and the
// copy maps the pages itself.
void prefault(Sample* from, int64_t count) {
  if (count <= 0) return;
  const uintptr_t page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
  const uintptr_t start = reinterpret_cast<uintptr_t>(from) & ~(page - 1);
  const uintptr_t end = reinterpret_cast<uintptr_t>(from + count) & ~(page - 1);
  if (end > start) madvise(reinterpret_cast<void*>(start), end - start, MADV_POPULATE_WRITE);
}

// Reads the file on a thread of its own into two blocks in turn while the caller appends the
// other one. A whole file's vector is fresh memory that the kernel maps page by page as it is
// first written, which costs about as long as the disk takes to read it: done one after the
// other, a load took the sum of both.
class ReadAhead {
public:
  ReadAhead(IQFileReader& reader, int64_t count) : reader(reader), count(count) {
    thread = std::thread([this] { run(); });
    pthread_setname_np(thread.native_handle(), "Arb File Load");  // at most 15 characters
  }
  ~ReadAhead() {
    {
      const std::lock_guard<std::mutex> hold(lock);
      stopped = true;
    }
    changed.notify_all();
    thread.join();
  }

  // Appends every block to `samples` until a read comes up short or `count` is reached.
  void appendAll(std::vector<Sample>& samples) {
    for (int k = 0;; k ^= 1) {
      const int64_t room = static_cast<int64_t>(samples.capacity() - samples.size());
      prefault(samples.data() + samples.size(), std::min<int64_t>(readBlock, room));
      std::unique_lock<std::mutex> hold(lock);
      changed.wait(hold, [&] { return buffers[k].full; });
      const int64_t got = buffers[k].got;
      hold.unlock();
      if (got <= 0) return;
      samples.insert(samples.end(), buffers[k].block.begin(), buffers[k].block.begin() + got);
      hold.lock();
      buffers[k].full = false;
      hold.unlock();
      changed.notify_all();
    }
  }

private:
  struct Slot {
    std::vector<Sample> block = std::vector<Sample>(readBlock);
    int64_t got = 0;
    bool full = false;
  };

  void run() {
    int64_t done = 0;
    for (int k = 0;; k ^= 1) {
      {
        std::unique_lock<std::mutex> hold(lock);
        changed.wait(hold, [&] { return !buffers[k].full || stopped; });
        if (stopped) return;
      }
      const int64_t got =
          done < count ? reader.read(buffers[k].block.data(),
                                     static_cast<int>(std::min<int64_t>(readBlock, count - done)))
                       : 0;
      done += std::max<int64_t>(got, 0);
      {
        const std::lock_guard<std::mutex> hold(lock);
        buffers[k].got = got;
        buffers[k].full = true;
      }
      changed.notify_all();
      if (got <= 0) return;
    }
  }

  IQFileReader& reader;
  const int64_t count;
  Slot buffers[2];
  std::mutex lock;
  std::condition_variable changed;
  bool stopped = false;
  std::thread thread;
};

// The reader parses the whole text at open; a bad line fails the open but keeps the samples
// before it.
bool readCsv(const QString& path, int64_t limit, std::vector<Sample>& out) {
  CSVFileReader reader;
  if (!reader.open(path) && reader.errorText().isEmpty()) return false;
  const std::vector<Sample>& data = reader.data();
  out.assign(data.begin(), data.begin() + std::min<int64_t>(limit, reader.sampleCount()));
  return true;
}

bool readMidas(const QString& path, int64_t limit, std::vector<Sample>& out) {
  MidasBlueFile file;
  if (file.open(path) != 0) return false;
  const int64_t count = std::min(file.sampleCount(), limit);
  out.assign(static_cast<size_t>(std::max<int64_t>(count, 0)), Sample());
  file.read(out.data(), 0, count);  // a kind it can't read leaves zeros
  return true;
}

}  // namespace

std::unique_ptr<IQFileReader> streamReaderFor(int kind) {
  switch (kind) {
    case KindBinary16: return std::make_unique<BinaryFile16sc>();
    case KindBinary32: return std::make_unique<BinaryFile32fc>();
    case KindWav: return std::make_unique<WavReader>();
    case KindSigMF: return std::make_unique<SigMFReader>();
    default: return nullptr;
  }
}

std::vector<Sample> readAllSamples(IQFileReader& reader, int64_t limit) {
  const int64_t count = std::min(reader.sampleCount(), limit);
  if (count <= 0) return {};
  std::vector<Sample> samples;
  samples.reserve(static_cast<size_t>(count));
  ReadAhead(reader, count).appendAll(samples);
  return samples;
}

bool readWholeFile(int kind, const QString& path, int64_t limit, std::vector<Sample>& out) {
  if (kind == KindCsv) return readCsv(path, limit, out);
  if (kind == KindMidasBlue) return readMidas(path, limit, out);
  std::unique_ptr<IQFileReader> reader = streamReaderFor(kind);
  if (!reader || !reader->open(path)) return false;
  out = readAllSamples(*reader, limit);
  return true;
}
