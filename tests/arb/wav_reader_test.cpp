// SPDX-License-Identifier: MIT
// WavReader against files from sox and Python, and one file for each fault of the header.
#include "arb/wav_reader.h"
#include "made_files.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// Every sample, in blocks of 3: an odd size puts the widening in place to the test.
std::vector<Sample> readAll(WavReader& reader) {
  std::vector<Sample> all;
  Sample block[3];
  for (int64_t n; (n = reader.read(block, 3)) > 0;) all.insert(all.end(), block, block + n);
  return all;
}

TEST(WavReader, ReadsFilesFromSoxAndPython) {
  MadeFiles files;
  ASSERT_TRUE(files.python(R"(import struct, wave
raw = struct.pack('<8h', 1, -32768, 32767, 16384, -16384, 100, 5, -7)
open('s16.raw', 'wb').write(raw)
w = wave.open('wave.wav', 'wb'); w.setnchannels(2); w.setsampwidth(2)
w.setframerate(8000); w.writeframes(raw); w.close()
data = struct.pack('<6f', 0.5, -0.25, 1.5, -1e-3, 0, 3)
open('f32.raw', 'wb').write(data)
fmt = struct.pack('<4sIHHIIHH', b'fmt ', 16, 3, 2, 1000, 8000, 8, 32)
body = b'WAVE' + fmt + b'LIST' + struct.pack('<I', 5) + b'INFOx'
body += b'data' + struct.pack('<I', len(data)) + data
open('float.wav', 'wb').write(b'RIFF' + struct.pack('<I', len(body)) + body)
)"));
  ASSERT_TRUE(
      files.run("sox -t raw -r 48000 -e signed -b 16 -c 2 s16.raw sox.wav && sox -t raw "
                "-r 48000 -e float -b 32 -c 2 f32.raw -e float -b 32 soxf.wav 2>/dev/null"));
  const float lsb = 1.0f / 32768;
  const std::vector<Sample> s16 = {
      {lsb, -1}, {32767 * lsb, 0.5f}, {-0.5f, 100 * lsb}, {5 * lsb, -7 * lsb}};
  const std::vector<Sample> f32 = {{0.5f, -0.25f}, {1.5f, -1e-3f}, {0, 3}};
  const struct {
    const char* name;
    const std::vector<Sample>& samples;
  } cases[] = {{"sox.wav", s16}, {"wave.wav", s16}, {"float.wav", f32}};
  for (const auto& c : cases) {
    WavReader reader;
    ASSERT_TRUE(reader.open(files.path(c.name))) << c.name << reader.errorText().toStdString();
    EXPECT_EQ(reader.sampleCount(), int64_t(c.samples.size()));
    EXPECT_EQ(readAll(reader), c.samples) << c.name;
    EXPECT_TRUE(reader.rewind());
    EXPECT_EQ(readAll(reader), c.samples) << c.name;
  }
  // sox writes float files with an 18-byte format chunk, which has no place here.
  WavReader reader;
  EXPECT_FALSE(reader.open(files.path("soxf.wav")));
  EXPECT_EQ(reader.errorText(), "Invalid FMT chunk size");
}

// A valid 16-bit header and two samples, with one field changed per case.
struct Header {
  QByteArray riff = "RIFF", wave = "WAVE", fmt = "fmt ", dataId = "data";
  uint32_t fmtSize = 16, dataSize = 8;
  uint16_t format = 1, channels = 2, blockAlign = 4, bits = 16;

  QByteArray bytes() const {
    return riff + QByteArray(4, '\0') + wave + fmt + littleEndian(fmtSize) + littleEndian(format) +
           littleEndian(channels) + QByteArray(8, '\0') + littleEndian(blockAlign) +
           littleEndian(bits) + dataId + littleEndian(dataSize) + QByteArray(8, '\1');
  }
};

TEST(WavReader, EachHeaderFaultHasItsMessage) {
  const auto with = [](auto change) {
    Header h;
    change(h);
    return h.bytes();
  };
  const struct {
    QByteArray file;
    const char* error;
  } cases[] = {
      {"", "Invalid format (RIFF)"},
      {with([](Header& h) { h.riff = "RIFX"; }), "Invalid format (RIFF)"},
      {with([](Header& h) { h.wave = "WAVF"; }), "Invalid format (WAVE)"},
      {with([](Header& h) { h.fmt = "fmt_"; }), "Invalid format (fmt )"},
      {with([](Header& h) { h.fmtSize = 18; }), "Invalid FMT chunk size"},
      {with([](Header& h) { h.channels = 1, h.format = 2; }), "Invalid number of channels"},
      {with([](Header& h) { h.format = 2; }), "Invalid audio format"},
      {with([](Header& h) { h.bits = 24; }), "Invalid PCM bit depth, expected 16-bit"},
      {with([](Header& h) { h.format = 3, h.bits = 64; }),
       "Invalid IEEE sample size, expected 32-bit"},
      {with([](Header& h) { h.blockAlign = 0; }), "Invalid block align"},
      {with([](Header& h) { h.blockAlign = 8; }), "Invalid block align"},
      {with([](Header& h) { h.dataId = "LIST"; }), "No DATA chunk found"},
      {with([](Header& h) { h.dataId = "JUNK", h.dataSize = 0xfffffff0u; }), "No DATA chunk found"},
      {Header().bytes().left(40), "No DATA chunk found"},
      {with([](Header& h) { h.dataSize = 1u << 30; }), ""},  // opens with the 2 samples there
  };
  MadeFiles files;
  for (const auto& c : cases) {
    files.write("bad.wav", c.file);
    WavReader reader;
    EXPECT_EQ(reader.open(files.path("bad.wav")), !*c.error) << c.error;
    EXPECT_EQ(reader.errorText(), c.error);
    Sample out[4];
    EXPECT_EQ(reader.read(out, 4), *c.error ? -1 : 2) << c.error;
    EXPECT_EQ(reader.sampleCount(), *c.error ? 0 : 2) << c.error;
  }
  WavReader reader;
  for (const QString& path : {files.path("missing.wav"), files.dir.path()}) {
    EXPECT_FALSE(reader.open(path));
    EXPECT_EQ(reader.errorText(), "Unable to open file");
  }
}

}  // namespace
