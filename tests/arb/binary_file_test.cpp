// SPDX-License-Identifier: MIT
// BinaryFile16sc and BinaryFile32fc against files written by numpy.
#include "arb/binary_file_16sc.h"
#include "arb/binary_file_32fc.h"
#include "made_files.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

const int16_t ints[] = {0, 1, -32768, 32767, 16384, -16384, 100, -100, 5, -7};
const float floats[] = {0.5f, -0.25f, 1.5f, -1e-3f, 0.0f, 3.0f, 7.0f, -7.0f};

class BinaryFile : public ::testing::Test {
protected:
  void SetUp() override {
    ASSERT_TRUE(files.python(
        "import numpy as np\n"
        "np.array([0, 1, -32768, 32767, 16384, -16384, 100, -100, 5, -7], '<i2').tofile('s16.bin')\n"
        "np.array([0.5, -0.25, 1.5, -1e-3, 0, 3, 7, -7], '<f4').tofile('f32.bin')\n"
        "open('six.bin', 'wb').write(bytes(6))\n"
        "open('empty.bin', 'wb').close()\n"));
  }
  MadeFiles files;
};

Sample expected16(int k) { return Sample(ints[2 * k] / 32768.0f, ints[2 * k + 1] / 32768.0f); }

// Odd and even block sizes, each into a buffer of exactly that size: the widening in place
// must not overwrite a raw value before it is read, nor touch memory past the block.
TEST_F(BinaryFile, SixteenBitReadsScaledBlocksInPlace) {
  BinaryFile16sc reader;
  ASSERT_TRUE(reader.open(files.path("s16.bin")));
  EXPECT_FALSE(reader.open(files.path("s16.bin")));
  ASSERT_EQ(reader.sampleCount(), 5);
  for (int block : {5, 3, 1, 2}) {
    ASSERT_TRUE(reader.rewind());
    int k = 0;
    while (reader.samplesRemaining() > 0) {
      std::vector<Sample> out(block);
      const int64_t n = reader.read(out.data(), block);
      ASSERT_EQ(n, std::min(block, 5 - k));
      for (int i = 0; i < n; ++i, ++k) EXPECT_EQ(out[i], expected16(k)) << block << " " << k;
    }
  }
  EXPECT_EQ(expected16(2), Sample(0.5f, -0.5f));
  EXPECT_EQ(expected16(1), Sample(-1.0f, 32767 / 32768.0f));
  Sample out[1];
  EXPECT_EQ(reader.read(out, 1), 0);
  EXPECT_EQ(reader.read(nullptr, 1), 0);
}

TEST_F(BinaryFile, FloatReadsRawBytes) {
  BinaryFile32fc reader;
  Sample out[8] = {};
  EXPECT_EQ(reader.read(out, 1), 0);
  ASSERT_TRUE(reader.open(files.path("f32.bin")));
  ASSERT_EQ(reader.sampleCount(), 4);
  EXPECT_EQ(reader.read(nullptr, 4), 0);
  EXPECT_EQ(reader.read(out, 3), 3);
  EXPECT_EQ(reader.samplesRemaining(), 1);
  EXPECT_EQ(reader.read(out + 3, 8), 1);
  for (int k = 0; k < 4; ++k) EXPECT_EQ(out[k], Sample(floats[2 * k], floats[2 * k + 1]));
}

TEST_F(BinaryFile, SizesAreTruncatedToWholeSamples) {
  const struct {
    const char* name;
    int64_t count16, count32;
  } cases[] = {{"six.bin", 1, 0}, {"empty.bin", 0, 0}};
  for (const auto& c : cases) {
    BinaryFile16sc raw16;
    BinaryFile32fc raw32;
    ASSERT_TRUE(raw16.open(files.path(c.name)) && raw32.open(files.path(c.name)));
    EXPECT_EQ(raw16.sampleCount(), c.count16) << c.name;
    EXPECT_EQ(raw32.sampleCount(), c.count32) << c.name;
    EXPECT_EQ(raw32.samplesRemaining(), c.count32) << c.name;
  }
  BinaryFile16sc missing;
  EXPECT_FALSE(missing.open(files.path("missing.bin")));
  EXPECT_FALSE(missing.open(files.dir.path()));
  EXPECT_EQ(missing.sampleCount(), 0);
}

}  // namespace
