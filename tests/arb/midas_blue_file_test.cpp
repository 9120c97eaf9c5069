// SPDX-License-Identifier: MIT
// MidasBlueFile against headers packed with Python's struct from the field table.
#include "arb/midas_blue_file.h"
#include "made_files.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

class MidasBlue : public ::testing::Test {
protected:
  void SetUp() override {
    ASSERT_TRUE(files.python(R"(import struct
def record(key, fmt, value):
    pad = -(8 + len(value) + len(key)) % 8
    length = 8 + len(value) + len(key) + pad
    return struct.pack('<ihBc', length, length - len(value), len(key), fmt) + value + key + bytes(pad)
def blue(name, kind, data, ext=b''):
    h = bytearray(512)
    h[0:12] = b'BLUEEEEIEEEI'
    struct.pack_into('<iiddi', h, 24, 2 if ext else 0, len(ext), 512.0, float(len(data)), 1000)
    h[52:54] = b'C' + kind
    struct.pack_into('<d', h, 264, 2.0 ** -20)
    open(name, 'wb').write(bytes(h) + data + (bytes(1024 - 512 - len(data)) + ext if ext else b''))
ext = record(b'NAME', b'A', b'hello\0\0\0') + record(b'GAINS', b'D', struct.pack('<2d', 1.5, -2.25))
blue('int.tmp', b'I', struct.pack('<6h', 16384, -32767, 32767, 0, -100, 5), ext)
blue('float.tmp', b'F', struct.pack('<4f', 0.5, -0.25, 1.5, -1e-3))
blue('double.tmp', b'D', struct.pack('<4d', 1, 2, 3, 4))
)"));
  }
  MadeFiles files;
};

float midas16(int v) { return static_cast<float>(v * (1.0 / 32767)); }

TEST_F(MidasBlue, ReadsEachKindAndPrintsTheExtendedHeader) {
  MidasBlueFile ints, floats, doubles;
  testing::internal::CaptureStdout();
  ASSERT_EQ(ints.open(files.path("int.tmp")), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "KeyName: NAME\nFormatCode: A\nData: hello\n\n"
            "KeyName: GAINS\nFormatCode: D\n1.500000, -2.250000, \n\n");
  EXPECT_EQ(ints.open(files.path("int.tmp")), -1);
  EXPECT_EQ(ints.sampleRate(), 1048576.0);
  ASSERT_EQ(ints.sampleCount(), 3);
  Sample out[4] = {};
  EXPECT_EQ(ints.read(out, 1, 10), 2);
  EXPECT_EQ(out[1], Sample(midas16(-100), midas16(5)));
  EXPECT_EQ(ints.read(out, 0, 1), 1);
  EXPECT_EQ(out[0], Sample(midas16(16384), -1.0f));
  EXPECT_NEAR(out[0].real(), 0.50002f, 1e-5f);
  EXPECT_EQ(ints.read(out, 3, 1) + ints.read(out, -1, 1) + ints.read(out, 0, 0), 0);

  ASSERT_EQ(floats.open(files.path("float.tmp")) + doubles.open(files.path("double.tmp")), 0);
  EXPECT_EQ(doubles.sampleCount(), 2);
  EXPECT_EQ(doubles.read(out, 0, 2), 0);  // kind D opens but moves no data
  EXPECT_EQ(out[0], Sample(midas16(16384), -1.0f));
  ASSERT_EQ(floats.read(out, 0, 3), 2);
  EXPECT_EQ(out[0], Sample(0.5f, -0.25f));
  EXPECT_EQ(out[1], Sample(1.5f, -1e-3f));
}

// Each case overwrites part of a good file. Sizes that can't be are refused, and a corrupt
// extended header stops its walk without hanging; the data still opens.
TEST_F(MidasBlue, HeaderRulesAndAbsurdSizes) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const struct {
    int offset;
    QByteArray bytes;
    int result;
    int64_t count;
    QByteArray record = {};  // written at 512, the first data byte, as the extended header
  } cases[] = {
      {0, "BLUF", -1, 0},
      {4, "IEEE", -1, 0},
      {8, "IEEE", -1, 0},
      {12, littleEndian(int32_t{1}), -1, 0},
      {48, littleEndian(int32_t{2000}), -1, 0},
      {52, "S", -1, 0},
      {32, littleEndian(nan), -1, 0},
      {40, littleEndian(-8.0), -1, 0},
      {40, littleEndian(1e300), -1, 0},
      {40, littleEndian(1e12), 0, 2},  // counts only what the file holds
      {32, littleEndian(4096.0), 0, 0},
      {24, littleEndian(int32_t{-5}) + littleEndian(int32_t{64}), 0, 2},
      // Under an extended header of a gigabyte, a record of length 0, which never moves on.
      {24, littleEndian(int32_t{1}) + littleEndian(int32_t{1 << 30}), 0, 2, littleEndian(0)},
  };
  const QByteArray good = [&] {
    QFile file(files.path("float.tmp"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }();
  for (const auto& c : cases) {
    QByteArray bytes = good;
    bytes.replace(c.offset, c.bytes.size(), c.bytes);
    bytes.replace(512, c.record.size(), c.record);
    files.write("case.tmp", bytes);
    MidasBlueFile file;
    testing::internal::CaptureStdout();
    EXPECT_EQ(file.open(files.path("case.tmp")), c.result) << c.offset;
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(file.sampleCount(), c.count) << c.offset;
  }
  files.write("short.tmp", good.left(300));
  MidasBlueFile file;
  EXPECT_EQ(file.open(files.path("short.tmp")), -1);
  EXPECT_EQ(file.open(files.path("missing.tmp")), -1);
  EXPECT_EQ(file.sampleRate(), 0.0);
}

}  // namespace
