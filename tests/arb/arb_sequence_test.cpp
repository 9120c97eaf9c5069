// SPDX-License-Identifier: MIT
// Sequences: the ".seq" file against one packed by Python's struct module, damaged files, and
// the expansion with its hops.
#include "arb/arb_sequence.h"
#include "made_files.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

// Two entries of each kind but data, packed from the file's table by a writer of its own.
const QByteArray packer = R"(
import struct
def text(t):
    b = t.encode('latin-1')
    return struct.pack('<i', len(b)) + b
d = b'KSEQ' + struct.pack('<i', 1)
d += struct.pack('<I', 0xA0) + text('Burst') + text('burst.csv') + struct.pack('<ii', 3, 2)
d += struct.pack('<6f', 0.5, -0.25, 1, 0, 0, 1)
d += struct.pack('<I', 0xA2) + text('Up') + struct.pack('<d', 1.5e9)
d += struct.pack('<I', 0xA1) + text('Gap') + struct.pack('<ffi', 0.125, -0.5, 4)
d += struct.pack('<I', 0xA2) + text('Größe') + struct.pack('<d', 2e9)
open('hand.seq', 'wb').write(d)
)";

QByteArray readAll(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

TEST(ArbSequence, ReadsExpandsAndWritesBackTheSameBytes) {
  MadeFiles files;
  ASSERT_TRUE(files.python(packer));
  ArbSequence sequence;
  ASSERT_EQ(sequence.load(files.path("hand.seq")), ArbSequence::LoadResult::Loaded);
  const auto& e = sequence.entries();
  ASSERT_EQ(e.size(), 4u);
  EXPECT_EQ(e[0]->name, "Burst");
  EXPECT_EQ(e[0]->fileName, "burst.csv");
  EXPECT_EQ(e[0]->repetitions, 2);
  EXPECT_EQ(e[2]->constant, Sample(0.125f, -0.5f));
  EXPECT_EQ(e[3]->name, QString::fromUtf8("Größe"));
  EXPECT_EQ(sequence.freqChangeCount(), 2);
  EXPECT_EQ(sequence.totalSamples(), 10);
  EXPECT_DOUBLE_EQ(sequence.duration(10.0), 1.0004);

  SequenceBuffer out;
  ASSERT_TRUE(sequence.build(out));
  const Sample a(0.5f, -0.25f), b(1, 0), c(0, 1), k(0.125f, -0.5f);
  EXPECT_EQ(out.signal, (std::vector<Sample>{a, b, c, a, b, c, k, k, k, k}));
  ASSERT_EQ(out.hops.size(), 2u);
  EXPECT_EQ(out.hops[0].index, 6);
  EXPECT_EQ(out.hops[0].frequency, 1.5e9);
  EXPECT_EQ(out.hops[1].index, 10) << "a hop at the end leaves an empty tail";

  // In the given order, skipping an id that no entry has.
  std::vector<int> order = {e[0]->id, -7, e[1]->id, e[2]->id, e[3]->id};
  ASSERT_TRUE(sequence.save(files.path("copy.seq"), order));
  EXPECT_EQ(readAll(files.path("copy.seq")), readAll(files.path("hand.seq")));
  order = {e[3]->id, e[1]->id, e[0]->id};
  ASSERT_TRUE(sequence.save(files.path("copy.seq"), order));
  ArbSequence reordered;
  reordered.load(files.path("copy.seq"));
  ASSERT_TRUE(reordered.build(out));
  ASSERT_EQ(out.hops.size(), 2u);
  EXPECT_EQ(out.hops[1].index, 0) << "hops in a row, before any sample";
  EXPECT_EQ(out.signal.size(), 6u);
}

QByteArray header(int32_t version = 1) { return "KSEQ" + littleEndian(version); }
QByteArray text(const QByteArray& t) { return littleEndian<int32_t>(t.size()) + t; }

TEST(ArbSequence, DamagedFiles) {
  const QByteArray hop = littleEndian<uint32_t>(0xA2) + text("H") + littleEndian(3e9);
  const QByteArray data = littleEndian<uint32_t>(0xA0) + text("D") + text("f");
  const QByteArray samples(24, '\0');  // three zero samples
  const struct {
    const char* name;
    QByteArray bytes;
    ArbSequence::LoadResult result;
    std::vector<int> types;
    int64_t total;
  } cases[] = {
      {"other magic",
       "KSEX" + littleEndian<int32_t>(1) + hop,
       ArbSequence::LoadResult::InvalidFormat,
       {},
       0},
      {"version 2", header(2) + hop, ArbSequence::LoadResult::InvalidFormat, {}, 0},
      {"header only", header(), ArbSequence::LoadResult::Loaded, {}, 0},
      {"unknown tag",
       header() + littleEndian<uint32_t>(0xB0) + hop,
       ArbSequence::LoadResult::Loaded,
       {0, 2},
       0},
      {"data cut short",
       header() + data + littleEndian<int32_t>(10) + littleEndian<int32_t>(1) + samples,
       ArbSequence::LoadResult::Loaded,
       {0},
       3},
      {"count past any file",
       header() + data + littleEndian<int32_t>(INT32_MAX) + littleEndian<int32_t>(INT32_MAX) +
           samples,
       ArbSequence::LoadResult::Loaded,
       {0},
       3LL * INT32_MAX},
      {"name longer than the file",
       header() + littleEndian<uint32_t>(0xA1) + littleEndian<int32_t>(1 << 30),
       ArbSequence::LoadResult::Loaded,
       {1},
       0},
  };
  MadeFiles files;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    files.write("damaged.seq", c.bytes);
    ArbSequence sequence;
    sequence.add(ArbSequenceEntry::Constant)->constantLength = 5;  // a load clears it first
    EXPECT_EQ(sequence.load(files.path("damaged.seq")), c.result);
    std::vector<int> types;
    for (const auto& e : sequence.entries()) types.push_back(e->type);
    EXPECT_EQ(types, c.types);
    EXPECT_EQ(sequence.totalSamples(), c.total);
  }
  ArbSequence none;
  EXPECT_EQ(none.load(files.path("absent.seq")), ArbSequence::LoadResult::NotOpened);
}

TEST(ArbSequence, ExpansionBeyondTheSaveLimitIsRefused) {
  ArbSequence sequence;
  ArbSequenceEntry* gap = sequence.add(ArbSequenceEntry::Constant);
  gap->constantLength = ArbSequence::maxTotalSamples + 1;
  SequenceBuffer out;
  out.signal.resize(3);
  EXPECT_FALSE(sequence.build(out));
  EXPECT_TRUE(out.signal.empty());
  gap->constantLength = -5;  // hand-made: counts against the total, expands to nothing
  sequence.add(ArbSequenceEntry::Constant)->constantLength = 8;
  EXPECT_EQ(sequence.totalSamples(), 3);
  ASSERT_TRUE(sequence.build(out));
  EXPECT_EQ(out.signal.size(), 8u);
}

}  // namespace
