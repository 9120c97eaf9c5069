// SPDX-License-Identifier: MIT
// SigMFReader against recordings written with Python's json and numpy.
#include "arb/sigmf_reader.h"
#include "made_files.h"

#include <gtest/gtest.h>

namespace {

TEST(SigMFReader, ReadsBothDatatypesFromEitherFileOfThePair) {
  MadeFiles files;
  ASSERT_TRUE(files.python(R"(import json, numpy as np
def pair(name, datatype, values):
    meta = {'global': {'core:datatype': datatype, 'core:sample_rate': 2.5e6,
                       'core:version': '1.0.0'}, 'captures': [], 'annotations': []}
    json.dump(meta, open(name + '.sigmf-meta', 'w'))
    values.tofile(name + '.sigmf-data')
pair('f', 'cf32_le', np.array([0.5 - 0.25j, 1.5 + 1e-3j], '<c8'))
pair('i', 'ci16_le', np.array([16384, -32768, 32767, 7], '<i2'))
)"));
  const struct {
    const char* path;
    Sample second;
  } cases[] = {
      {"f.sigmf-meta", {1.5f, 1e-3f}},
      {"f.sigmf-data", {1.5f, 1e-3f}},
      {"i.sigmf-meta", {32767 / 32768.0f, 7 / 32768.0f}},
  };
  for (const auto& c : cases) {
    SigMFReader reader;
    ASSERT_TRUE(reader.open(files.path(c.path))) << reader.errorText().toStdString();
    EXPECT_EQ(reader.sampleRate(), 2.5e6);
    ASSERT_EQ(reader.sampleCount(), 2);
    Sample out[3];
    ASSERT_TRUE(reader.read(out, 1) == 1 && reader.read(out + 1, 2) == 1) << c.path;
    EXPECT_EQ(out[0], c.path[0] == 'f' ? Sample(0.5f, -0.25f) : Sample(0.5f, -1.0f)) << c.path;
    EXPECT_EQ(out[1], c.second) << c.path;
    EXPECT_TRUE(reader.rewind());
    EXPECT_EQ(reader.samplesRemaining(), 2);
  }
}

TEST(SigMFReader, AMetaThatCantBeUsedNamesTheKey) {
  const struct {
    const char* meta;
    const char* error;
  } cases[] = {
      {R"({"global": )", "not valid JSON"},
      {"[]", "missing key global"},
      {R"({"global": {}})", "missing key global/core:datatype"},
      {R"({"global": {"core:datatype": 7}})", "invalid key global/core:datatype"},
      {R"({"global": {"core:datatype": "cu8"}})", "unsupported datatype cu8"},
      {R"({"global": {"core:datatype": "cf32_le", "core:num_channels": 2}})",
       "unsupported key global/core:num_channels"},
      {R"({"global": {"core:datatype": "cf32_le", "core:sample_rate": "fast"}})",
       "invalid key global/core:sample_rate"},
      {R"({"global": {"core:datatype": "cf32_le", "core:sample_rate": -1}})",
       "invalid key global/core:sample_rate"},
  };
  MadeFiles files;
  for (const auto& c : cases) {
    files.write("r.sigmf-meta", c.meta);
    SigMFReader reader;
    EXPECT_FALSE(reader.open(files.path("r.sigmf-data")));
    EXPECT_EQ(reader.errorText(), QString("SigMF meta: ") + c.error);
  }
  files.write("r.sigmf-meta", R"({"global": {"core:datatype": "ci16_le"}})");
  SigMFReader reader;
  EXPECT_FALSE(reader.open(files.path("r.sigmf-meta")));
  EXPECT_EQ(reader.errorText(), "SigMF data: unable to open file");
  EXPECT_FALSE(reader.isOpen());
}

}  // namespace
