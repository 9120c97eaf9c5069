// SPDX-License-Identifier: MIT
// A sequence: waveform pieces, constant stretches and frequency hops played as one waveform,
// and its ".seq" file.
#include "arb/arb_sequence.h"

#include <QFile>
#include <QtEndian>

#include <algorithm>
#include <atomic>
#include <cstring>

static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "samples are read and written as they lie");

namespace {

std::atomic<int> nextEntryId{1};

constexpr char magic[4] = {'K', 'S', 'E', 'Q'};
constexpr int32_t fileVersion = 1;
constexpr uint32_t tagOf[] = {0xA0, 0xA1, 0xA2};  // by entry type
// A valid header followed by garbage makes an entry of every 4 bytes; this many is far beyond
// what anyone builds by hand, and bounds the memory such a file can take.
constexpr size_t maxEntries = 100000;
constexpr int64_t sumLimit = INT64_C(1) << 62;

const char* nameOf(int type) {
  switch (type) {
    case ArbSequenceEntry::Constant: return "Constant";
    case ArbSequenceEntry::FreqChange: return "Freq Change";
    default: return "I/Q Data";
  }
}

// Reads past the end give zeros, as a stream does, so a truncated file still makes entries.
class SeqReader {
public:
  explicit SeqReader(QFile& file) : file(file) {}
  bool atEnd() const { return file.bytesAvailable() <= 0; }
  qint64 remaining() const { return std::max<qint64>(file.bytesAvailable(), 0); }
  void raw(void* to, qint64 size) {
    if (size <= 0) return;  // an entry of no samples has no storage to point at
    const qint64 got = std::max<qint64>(file.read(static_cast<char*>(to), size), 0);
    std::memset(static_cast<char*>(to) + got, 0, static_cast<size_t>(size - got));
  }
  template <typename T>
  T value() {
    T v{};
    raw(&v, sizeof v);
    return qFromLittleEndian(v);
  }
  // A 32-bit byte length and that much Latin-1 text; a length past the end takes what is there.
  QString text() {
    const int32_t length = value<int32_t>();
    if (length <= 0) return {};
    const QByteArray bytes = file.read(std::min<qint64>(length, remaining()));
    return QString::fromLatin1(bytes);
  }

private:
  QFile& file;
};

void readEntry(SeqReader& in, ArbSequenceEntry& e) {
  e.name = in.text();
  if (e.type == ArbSequenceEntry::IQData) {
    e.fileName = in.text();
    const int32_t count = in.value<int32_t>();
    e.repetitions = in.value<int32_t>();
    // Only what the file holds: a count past its end can't claim memory.
    const int64_t fits = std::min<int64_t>(std::max(count, 0), in.remaining() / 8);
    e.samples.resize(static_cast<size_t>(fits));
    in.raw(e.samples.data(), fits * 8);
  } else if (e.type == ArbSequenceEntry::Constant) {
    const float i = in.value<float>();
    const float q = in.value<float>();
    e.constant = Sample(i, q);
    e.constantLength = in.value<int32_t>();
  } else {
    e.frequency = in.value<double>();
  }
}

class SeqWriter {
public:
  explicit SeqWriter(QFile& file) : file(file) {}
  bool ok() const { return good; }
  void raw(const void* from, qint64 size) {
    good = good && file.write(static_cast<const char*>(from), size) == size;
  }
  template <typename T>
  void value(T v) {
    v = qToLittleEndian(v);
    raw(&v, sizeof v);
  }
  // The length field counts characters; Latin-1 makes that the byte count too.
  void text(const QString& s) {
    value<int32_t>(s.length());
    raw(s.toLatin1().constData(), s.length());
  }

private:
  QFile& file;
  bool good = true;
};

void writeEntry(SeqWriter& out, const ArbSequenceEntry& e) {
  out.value<uint32_t>(tagOf[e.type]);
  out.text(e.name);
  if (e.type == ArbSequenceEntry::IQData) {
    out.text(e.fileName);
    out.value<int32_t>(static_cast<int32_t>(e.samples.size()));
    out.value<int32_t>(e.repetitions);
    out.raw(e.samples.data(), static_cast<qint64>(e.samples.size()) * 8);
  } else if (e.type == ArbSequenceEntry::Constant) {
    out.value<float>(e.constant.real());
    out.value<float>(e.constant.imag());
    out.value<int32_t>(e.constantLength);
  } else {
    out.value<double>(e.frequency);
  }
}

// Samples the entry adds to the expanded signal.
int64_t expandedLength(const ArbSequenceEntry& e) {
  if (e.type == ArbSequenceEntry::IQData)
    return static_cast<int64_t>(e.samples.size()) * std::max(e.repetitions, 0);
  if (e.type == ArbSequenceEntry::Constant) return std::max(e.constantLength, 0);
  return 0;
}

}  // namespace

ArbSequenceEntry::ArbSequenceEntry(int type)
    : type(std::clamp(type, 0, 2)), id(nextEntryId.fetch_add(1)), name(nameOf(this->type)) {}

ArbSequenceEntry* ArbSequence::add(int type) {
  items.push_back(std::make_unique<ArbSequenceEntry>(type));
  return items.back().get();
}

ArbSequenceEntry* ArbSequence::find(int id) const {
  for (const auto& e : items)
    if (e->id == id) return e.get();
  return nullptr;
}

void ArbSequence::remove(int id) {
  items.erase(
      std::remove_if(items.begin(), items.end(), [id](const auto& e) { return e->id == id; }),
      items.end());
}

int ArbSequence::freqChangeCount() const {
  return static_cast<int>(std::count_if(items.begin(), items.end(), [](const auto& e) {
    return e->type == ArbSequenceEntry::FreqChange;
  }));
}

int64_t ArbSequence::totalSamples() const {
  int64_t total = 0;
  for (const auto& e : items) {
    int64_t n = 0;
    if (e->type == ArbSequenceEntry::IQData)
      n = static_cast<int64_t>(e->samples.size()) * e->repetitions;
    else if (e->type == ArbSequenceEntry::Constant)
      n = e->constantLength;
    total = std::clamp(total + n, -sumLimit, sumLimit);  // hand-made files can't overflow it
  }
  return total;
}

double ArbSequence::duration(double sampleRate) const {
  return static_cast<double>(totalSamples()) / sampleRate + freqChangeCount() * switchTime;
}

ArbSequence::LoadResult ArbSequence::load(const QString& path) {
  clear();
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return LoadResult::NotOpened;
  SeqReader in(file);
  char head[4] = {};
  in.raw(head, 4);
  if (std::memcmp(head, magic, 4) != 0 || in.value<int32_t>() != fileVersion)
    return LoadResult::InvalidFormat;
  while (!in.atEnd() && items.size() < maxEntries) {
    const uint32_t tag = in.value<uint32_t>();
    const auto known = std::find(std::begin(tagOf), std::end(tagOf), tag);
    if (known == std::end(tagOf)) {
      add(ArbSequenceEntry::IQData);
      continue;
    }
    readEntry(in, *add(static_cast<int>(known - std::begin(tagOf))));
  }
  return LoadResult::Loaded;
}

bool ArbSequence::save(const QString& path, const std::vector<int>& order) const {
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate)) return false;
  SeqWriter out(file);
  out.raw(magic, 4);
  out.value<int32_t>(fileVersion);
  for (int id : order)
    if (const ArbSequenceEntry* e = find(id)) writeEntry(out, *e);
  return out.ok();
}

bool ArbSequence::build(SequenceBuffer& out) const {
  out.signal.clear();
  out.hops.clear();
  int64_t length = 0;
  for (const auto& e : items) {
    length += expandedLength(*e);
    if (length > maxTotalSamples) return false;
  }
  out.signal.reserve(static_cast<size_t>(length));
  for (const auto& e : items) {
    if (e->type == ArbSequenceEntry::IQData) {
      if (e->samples.empty()) continue;
      for (int32_t r = 0; r < e->repetitions; ++r)
        out.signal.insert(out.signal.end(), e->samples.begin(), e->samples.end());
    } else if (e->type == ArbSequenceEntry::Constant) {
      out.signal.insert(out.signal.end(), static_cast<size_t>(expandedLength(*e)), e->constant);
    } else {
      out.hops.push_back({static_cast<int64_t>(out.signal.size()), e->frequency});
    }
  }
  return true;
}
