// SPDX-License-Identifier: MIT
// CSVFileReader: what a line must be, where the reading ends and what an open keeps.
#include "arb/csv_file_reader.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

struct CsvFile {
  QTemporaryDir dir;
  QString path = dir.filePath("iq.csv");
  explicit CsvFile(const QByteArray& text) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
  }
};

TEST(CSVFileReader, ReadsLinesOfTwoNumbers) {
  CsvFile file("0.5,-0.25\r\n +1 , -2.5e-3\n-inf,nan\n3,4");
  CSVFileReader reader;
  ASSERT_TRUE(reader.open(file.path));
  EXPECT_TRUE(reader.isOpen());
  ASSERT_EQ(reader.sampleCount(), 4);
  EXPECT_EQ(reader.data()[0], Sample(0.5f, -0.25f));
  EXPECT_EQ(reader.data()[1], Sample(1.0f, -2.5e-3f));
  EXPECT_TRUE(std::isinf(reader.data()[2].real()) && std::isnan(reader.data()[2].imag()));
  EXPECT_EQ(reader.data()[3], Sample(3.0f, 4.0f));
  // read() copies from the start whatever came before, at most what remains.
  Sample out[6] = {};
  EXPECT_EQ(reader.read(out, 6), 4);
  EXPECT_EQ(reader.read(out, 1), 1);
  EXPECT_EQ(out[0], Sample(0.5f, -0.25f));
}

// The first line that isn't two numbers ends the reading and fails the open; what came
// before it stays.
TEST(CSVFileReader, ABadLineEndsTheReading) {
  const struct {
    QByteArray text;
    int64_t kept;
    QString error;
  } cases[] = {
      {"1,2\n1,2,3\n4,5\n", 1, "Invalid sample count on line 2"},
      {"1,2\n3;4\n", 1, "Invalid sample count on line 2"},
      {"1,2\n\n3,4\n", 1, "Invalid sample count on line 2"},
      {"1,abc\n", 0, "Invalid value on line 1"},
      {"1,1e39\n", 0, "Invalid value on line 1"},
      {"1,2\n3,4\n++1,2\n", 2, "Invalid value on line 3"},
      {"0x1,2\n", 0, "Invalid value on line 1"},
      {",\n", 0, "Invalid value on line 1"},
  };
  for (const auto& c : cases) {
    CsvFile file(c.text);
    CSVFileReader reader;
    EXPECT_FALSE(reader.open(file.path)) << c.text.left(20).constData();
    EXPECT_FALSE(reader.isOpen());
    EXPECT_EQ(reader.sampleCount(), c.kept) << c.text.left(20).constData();
    EXPECT_EQ(reader.errorText(), c.error);
  }
  CsvFile empty("");
  CSVFileReader reader;
  EXPECT_TRUE(reader.open(empty.path));
  EXPECT_EQ(reader.sampleCount(), 0);
  EXPECT_TRUE(reader.errorText().isEmpty());
  EXPECT_FALSE(reader.open(empty.dir.filePath("missing.csv")));
  EXPECT_FALSE(reader.open(empty.dir.path())) << "a directory";
}

// Lines longer than a read block join across it.
TEST(CSVFileReader, LinesAcrossBlocks) {
  QByteArray text;
  const QByteArray line = QByteArray(40, ' ') + "0.125,-0.75\n";
  while (text.size() < (5 << 20)) text += line;
  CsvFile file(text);
  CSVFileReader reader;
  ASSERT_TRUE(reader.open(file.path));
  ASSERT_EQ(reader.sampleCount(), text.size() / line.size());
  EXPECT_TRUE(std::all_of(reader.data().begin(), reader.data().end(),
                          [](Sample s) { return s == Sample(0.125f, -0.75f); }));
}

}  // namespace
