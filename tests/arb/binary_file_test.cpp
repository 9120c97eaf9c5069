// SPDX-License-Identifier: MIT
// BinaryFile16sc and BinaryFile32fc against files written by numpy; a whole file read at once.
#include "arb/binary_file_16sc.h"
#include "arb/binary_file_32fc.h"
#include "arb/iq_file_loading.h"
#include "made_files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

namespace {

TEST(BinaryFile, ReadsNumpyFilesInBlocksOfAnySize) {
  MadeFiles files;
  ASSERT_TRUE(files.python(
      "import numpy as np\n"
      "np.array([0, 1, -32768, 32767, 16384, -16384, 100, -100, 5, -7], '<i2').tofile('s16')\n"
      "np.array([0.5, -0.25, 1.5, -1e-3, 0, 3, 7, -7, 1, 2], '<f4').tofile('f32')\n"
      "open('six', 'wb').write(bytes(6))\n"
      "open('empty', 'wb').close()\n"));
  const float lsb = 1.0f / 32768;
  const std::vector<Sample> s16 = {
      {0, lsb}, {-1, 32767 * lsb}, {0.5f, -0.5f}, {100 * lsb, -100 * lsb}, {5 * lsb, -7 * lsb}};
  const std::vector<Sample> f32 = {{0.5f, -0.25f}, {1.5f, -1e-3f}, {0, 3}, {7, -7}, {1, 2}};
  BinaryFile16sc raw16;
  BinaryFile32fc raw32;
  ASSERT_TRUE(raw16.open(files.path("s16")) && raw32.open(files.path("f32")));
  // Odd and even blocks, each into a buffer of exactly its size: the widening in place must
  // neither overwrite a raw value before it is read nor write past the block.
  for (IQFileReader* reader :
       {static_cast<IQFileReader*>(&raw16), static_cast<IQFileReader*>(&raw32)}) {
    ASSERT_EQ(reader->sampleCount(), 5);
    for (int block : {5, 3, 2, 1}) {
      ASSERT_TRUE(reader->rewind());
      std::vector<Sample> all;
      for (int64_t n = 1; n > 0;) {
        std::vector<Sample> out(block);
        n = reader->read(out.data(), block);
        all.insert(all.end(), out.begin(), out.begin() + n);
      }
      EXPECT_EQ(all, reader == static_cast<IQFileReader*>(&raw16) ? s16 : f32) << block;
      EXPECT_EQ(reader->samplesRemaining(), 0);
    }
  }
  // A trailing part of a sample is ignored.
  BinaryFile16sc six16, empty16;
  BinaryFile32fc six32;
  ASSERT_TRUE(six16.open(files.path("six")) && six32.open(files.path("six")));
  ASSERT_TRUE(empty16.open(files.path("empty")));
  EXPECT_EQ(six16.sampleCount(), 1);
  EXPECT_EQ(six32.sampleCount(), 0);
  EXPECT_EQ(empty16.sampleCount(), 0);
  EXPECT_FALSE(BinaryFile32fc().open(files.dir.path()));
}

// The whole-file read hands blocks of 2^20 samples from a thread of its own: none may be lost,
// repeated or reordered, and the cut at the longest period falls inside a block.
TEST(BinaryFile, ReadsAWholeFileInOrderUpToTheCut) {
  MadeFiles files;
  ASSERT_TRUE(files.python(
      "import numpy as np\n"
      "k = np.arange(2621447, dtype='<f4')\n"
      "np.stack([k, -k], 1).tofile('ramp')\n"
      "open('empty', 'wb').close()\n"));
  const int64_t block = 1 << 20, length = 2621447;  // two and a half blocks and a bit
  for (int64_t cut : {int64_t(0), int64_t(1), block - 1, block, block + 1, 2 * block + 5,
                      length, int64_t(100000000)}) {
    BinaryFile32fc reader;
    ASSERT_TRUE(reader.open(files.path("ramp")));
    const std::vector<Sample> all = readAllSamples(reader, cut);
    ASSERT_EQ(int64_t(all.size()), std::min(cut, length)) << cut;
    int64_t wrong = 0;
    for (size_t k = 0; k < all.size(); ++k) wrong += all[k] != Sample(float(k), -float(k));
    EXPECT_EQ(wrong, 0) << cut;
  }
  BinaryFile32fc empty;
  ASSERT_TRUE(empty.open(files.path("empty")));
  EXPECT_TRUE(readAllSamples(empty, 100).empty());
}

}  // namespace
