// SPDX-License-Identifier: MIT
// WavReader against files from sox and Python, and one file for each fault of the header.
#include "arb/wav_reader.h"
#include "made_files.h"

#include <QtEndian>

#include <gtest/gtest.h>

#include <vector>

namespace {

const int16_t ints[] = {0, 1, -32768, 32767, 16384, -16384, 100, -100, 5, -7};

// Reads every sample in blocks of 3, an odd size that puts the in-place widening to the test.
std::vector<Sample> readAll(WavReader& reader) {
  std::vector<Sample> all;
  Sample block[3];
  for (int64_t n; (n = reader.read(block, 3)) > 0;) all.insert(all.end(), block, block + n);
  return all;
}

TEST(WavReader, ReadsSixteenBitFilesFromSoxAndPythonWave) {
  MadeFiles files;
  ASSERT_TRUE(files.python(
      "import struct, wave\n"
      "raw = struct.pack('<10h', 0, 1, -32768, 32767, 16384, -16384, 100, -100, 5, -7)\n"
      "open('s16.raw', 'wb').write(raw)\n"
      "w = wave.open('wave.wav', 'wb'); w.setnchannels(2); w.setsampwidth(2)\n"
      "w.setframerate(8000); w.writeframes(raw); w.close()\n"));
  ASSERT_TRUE(files.run("sox -t raw -r 48000 -e signed -b 16 -c 2 s16.raw sox.wav"));
  for (const char* name : {"sox.wav", "wave.wav"}) {
    WavReader reader;
    ASSERT_TRUE(reader.open(files.path(name))) << name << reader.errorText().toStdString();
    ASSERT_EQ(reader.sampleCount(), 5) << name;
    for (int pass = 0; pass < 2; ++pass) {
      const std::vector<Sample> all = readAll(reader);
      ASSERT_EQ(all.size(), 5u) << name;
      for (int k = 0; k < 5; ++k)
        EXPECT_EQ(all[k], Sample(ints[2 * k] / 32768.0f, ints[2 * k + 1] / 32768.0f)) << name;
      EXPECT_EQ(reader.samplesRemaining(), 0);
      EXPECT_TRUE(reader.rewind());
    }
  }
}

// A float file packed with struct, with a LIST chunk before the data. sox's own float files
// carry an 18-byte format chunk, which the reader refuses as every file whose chunk isn't 16.
TEST(WavReader, ReadsFloatFilesAndSkipsOtherChunks) {
  MadeFiles files;
  ASSERT_TRUE(files.python(
      "import struct\n"
      "data = struct.pack('<6f', 0.5, -0.25, 1.5, -1e-3, 0, 3)\n"
      "fmt = struct.pack('<4sIHHIIHH', b'fmt ', 16, 3, 2, 1000, 8000, 8, 32)\n"
      "info = b'LIST' + struct.pack('<I', 5) + b'INFOx'\n"
      "body = b'WAVE' + fmt + info + b'data' + struct.pack('<I', len(data)) + data\n"
      "open('float.wav', 'wb').write(b'RIFF' + struct.pack('<I', len(body)) + body)\n"
      "open('f32.raw', 'wb').write(data)\n"));
  WavReader reader;
  ASSERT_TRUE(reader.open(files.path("float.wav"))) << reader.errorText().toStdString();
  EXPECT_EQ(reader.sampleRate(), 1000u);
  EXPECT_EQ(readAll(reader), (std::vector<Sample>{{0.5f, -0.25f}, {1.5f, -1e-3f}, {0.0f, 3.0f}}));
  ASSERT_TRUE(files.run("sox -t raw -r 48000 -e floating-point -b 32 -c 2 f32.raw -e "
                        "floating-point -b 32 sox_float.wav 2>/dev/null"));
  EXPECT_FALSE(reader.open(files.path("sox_float.wav")));
  EXPECT_EQ(reader.errorText(), "Invalid FMT chunk size");
}

// A valid 16-bit header and two samples, with one field changed per case.
struct Header {
  QByteArray riff = "RIFF", wave = "WAVE", fmt = "fmt ", dataId = "data";
  uint32_t fmtSize = 16, dataSize = 8;
  uint16_t format = 1, channels = 2, blockAlign = 4, bits = 16;

  QByteArray bytes() const {
    QByteArray b = riff + QByteArray(4, '\0') + wave + fmt + le(fmtSize) + le(format) +
                   le(channels) + le(uint32_t{8000}) + le(uint32_t{32000}) + le(blockAlign) +
                   le(bits) + dataId + le(dataSize) + QByteArray(8, '\1');
    return b;
  }
  template <class T>
  static QByteArray le(T v) {
    QByteArray b(sizeof v, '\0');
    qToLittleEndian(v, b.data());
    return b;
  }
};

TEST(WavReader, EachHeaderFaultHasItsMessage) {
  const auto with = [](auto change) { Header h; change(h); return h.bytes(); };
  const struct {
    QByteArray file;
    const char* error;
  } cases[] = {
      {"", "Invalid format (RIFF)"},
      {with([](Header& h) { h.riff = "RIFX"; }), "Invalid format (RIFF)"},
      {with([](Header& h) { h.wave = "WAVF"; }), "Invalid format (WAVE)"},
      {with([](Header& h) { h.fmt = "fmt_"; }), "Invalid format (fmt )"},
      {with([](Header& h) { h.fmtSize = 18; }), "Invalid FMT chunk size"},
      {with([](Header& h) { h.channels = 1; h.format = 2; }), "Invalid number of channels"},
      {with([](Header& h) { h.format = 2; }), "Invalid audio format"},
      {with([](Header& h) { h.bits = 24; }), "Invalid PCM bit depth, expected 16-bit"},
      {with([](Header& h) { h.format = 3; h.bits = 64; }), "Invalid IEEE sample size, expected 32-bit"},
      {with([](Header& h) { h.blockAlign = 0; }), "Invalid block align"},
      {with([](Header& h) { h.blockAlign = 8; }), "Invalid block align"},
      {with([](Header& h) { h.dataId = "LIST"; }), "No DATA chunk found"},
      {with([](Header& h) { h.dataId = "JUNK"; h.dataSize = 0xfffffff0u; }), "No DATA chunk found"},
      {Header().bytes().left(40), "No DATA chunk found"},
  };
  MadeFiles files;
  for (const auto& c : cases) {
    files.write("bad.wav", c.file);
    WavReader reader;
    EXPECT_FALSE(reader.open(files.path("bad.wav"))) << c.error;
    EXPECT_EQ(reader.errorText(), c.error);
    EXPECT_FALSE(reader.isOpen());
    Sample out[2];
    EXPECT_EQ(reader.read(out, 2), -1);
    EXPECT_EQ(reader.samplesRemaining(), -1);
  }
  WavReader reader;
  for (const QString& path : {files.path("missing.wav"), files.dir.path()}) {
    EXPECT_FALSE(reader.open(path));
    EXPECT_EQ(reader.errorText(), "Unable to open file");
  }
}

// A data chunk that claims a gigabyte counts only the two samples the file holds.
TEST(WavReader, ADataSizePastTheEndCountsWhatIsThere) {
  Header header;
  header.dataSize = 1u << 30;
  MadeFiles files;
  files.write("long.wav", header.bytes());
  WavReader reader;
  ASSERT_TRUE(reader.open(files.path("long.wav")));
  EXPECT_EQ(reader.sampleCount(), 2);
  std::vector<Sample> out(4);
  EXPECT_EQ(reader.read(out.data(), 4), 2);
  EXPECT_EQ(reader.samplesRemaining(), 0);
}

}  // namespace
