// SPDX-License-Identifier: MIT
// MidasBlueFile against headers packed with Python's struct from the field table.
#include "arb/midas_blue_file.h"
#include "made_files.h"

#include <QtEndian>

#include <gtest/gtest.h>

#include <cmath>
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
    body = bytes(h) + data
    if ext:
        body += bytes(1024 - len(body)) + ext
    open(name, 'wb').write(body)
ext = record(b'NAME', b'A', b'hello\0\0\0') + record(b'GAINS', b'D', struct.pack('<2d', 1.5, -2.25))
blue('int.tmp', b'I', struct.pack('<6h', 16384, -32767, 32767, 0, -100, 5), ext)
blue('float.tmp', b'F', struct.pack('<4f', 0.5, -0.25, 1.5, -1e-3))
blue('double.tmp', b'D', struct.pack('<4d', 1, 2, 3, 4))
)"));
  }
  MadeFiles files;
};

float midas16(int v) { return static_cast<float>(v * (1.0 / 32767)); }

TEST_F(MidasBlue, ReadsIntegerKindScaledBy32767AndPrintsTheExtendedHeader) {
  MidasBlueFile file;
  testing::internal::CaptureStdout();
  ASSERT_EQ(file.open(files.path("int.tmp")), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "KeyName: NAME\nFormatCode: A\nData: hello\n\n"
            "KeyName: GAINS\nFormatCode: D\n1.500000, -2.250000, \n\n");
  EXPECT_EQ(file.open(files.path("int.tmp")), -1);
  EXPECT_EQ(file.sampleRate(), 1048576.0);
  EXPECT_EQ(file.sampleSize(), 4);
  ASSERT_EQ(file.sampleCount(), 3);
  Sample out[4] = {};
  EXPECT_EQ(file.read(out, 1, 10), 2);
  EXPECT_EQ(out[0], Sample(midas16(32767), 0.0f));
  EXPECT_EQ(out[1], Sample(midas16(-100), midas16(5)));
  EXPECT_EQ(file.read(out, 0, 1), 1);
  EXPECT_EQ(out[0], Sample(midas16(16384), -1.0f));
  EXPECT_NEAR(out[0].real(), 0.50002f, 1e-5f);
  for (int64_t first : {-1, 3}) EXPECT_EQ(file.read(out, first, 1), 0);
  EXPECT_EQ(file.read(out, 0, 0), 0);
  EXPECT_EQ(file.read(nullptr, 0, 1), 0);
  file.close();
  EXPECT_EQ(file.sampleRate(), 0.0);
  EXPECT_EQ(file.read(out, 0, 1), 0);
}

TEST_F(MidasBlue, FloatKindReadsRawAndDoubleKindNothing) {
  MidasBlueFile floats, doubles;
  ASSERT_EQ(floats.open(files.path("float.tmp")), 0);
  ASSERT_EQ(doubles.open(files.path("double.tmp")), 0);
  EXPECT_EQ(floats.sampleSize(), 8);
  EXPECT_EQ(doubles.sampleSize(), 16);
  EXPECT_EQ(doubles.sampleCount(), 2);
  Sample out[2] = {{9, 9}, {9, 9}};
  EXPECT_EQ(doubles.read(out, 0, 2), 0);
  EXPECT_EQ(out[0], Sample(9, 9));
  ASSERT_EQ(floats.read(out, 0, 2), 2);
  EXPECT_EQ(out[0], Sample(0.5f, -0.25f));
  EXPECT_EQ(out[1], Sample(1.5f, -1e-3f));
}

template <class T>
QByteArray le(T v) {
  QByteArray b(sizeof v, '\0');
  qToLittleEndian(v, b.data());
  return b;
}

// Each case overwrites one field of a good file. Sizes that can't be are refused, and a
// corrupt extended header stops its walk without hanging; the data still opens.
TEST_F(MidasBlue, HeaderRulesAndAbsurdSizes) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const struct {
    int offset;
    QByteArray bytes;
    int result;
    int64_t count;
  } cases[] = {
      {0, "BLUF", -1, 0},         {4, "IEEE", -1, 0},           {8, "IEEE", -1, 0},
      {12, le(int32_t{1}), -1, 0}, {48, le(int32_t{2000}), -1, 0}, {52, "S", -1, 0},
      {32, le(nan), -1, 0},       {40, le(-8.0), -1, 0},        {40, le(1e300), -1, 0},
      {40, le(1e12), 0, 2},       {32, le(4096.0), 0, 0},
      {24, le(int32_t{1}) + le(int32_t{2000000000}), 0, 2},  // a size past the file
      {24, le(int32_t{-5}) + le(int32_t{64}), 0, 2},
      // Records in the data, under an extended header size of a gigabyte: one of length 0,
      // which would never move on, and one of 8, walked to the end of the file.
      {512, le(int32_t{0}), 0, 2},
      {512, le(int32_t{8}), 0, 2},
  };
  const QByteArray good = files.bytes("float.tmp");
  for (const auto& c : cases) {
    QByteArray bytes = good;
    bytes.replace(c.offset, c.bytes.size(), c.bytes);
    if (c.offset == 512) bytes.replace(24, 8, le(int32_t{1}) + le(int32_t{1 << 30}));
    files.write("case.tmp", bytes);
    MidasBlueFile file;
    testing::internal::CaptureStdout();
    EXPECT_EQ(file.open(files.path("case.tmp")), c.result) << c.offset;
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(file.isOpen(), c.result == 0);
    if (c.result == 0) EXPECT_EQ(file.sampleCount(), c.count) << c.offset;
  }
  files.write("short.tmp", good.left(300));
  MidasBlueFile file;
  EXPECT_EQ(file.open(files.path("short.tmp")), -1);
  EXPECT_EQ(file.open(files.path("missing.tmp")), -1);
}

}  // namespace
