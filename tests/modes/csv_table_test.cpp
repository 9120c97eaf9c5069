// SPDX-License-Identifier: MIT
// CsvTable: reading keeps empty fields and converts on demand, writing in default text form.
#include "modes/csv_table.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

TEST(CsvTable, ReadsFieldsAsTheyStandAndFallsBackBeyondALine) {
  CsvTable table;
  table.parse("1.5,-2\n,3,\n\nabc, 4e3 \r\n7\n");
  ASSERT_EQ(table.rowCount(), 5);
  struct Cell {
    int row, column;
    double number;  // fallback 99
    QString text;   // fallback "none"
  };
  for (const Cell& c :
       {Cell{0, 1, -2, "-2"}, Cell{0, 2, 99, "none"}, Cell{1, 0, 0, ""}, Cell{1, 2, 0, ""},
        Cell{2, 0, 0, ""}, Cell{3, 0, 0, "abc"}, Cell{3, 1, 4000, " 4e3 "}, Cell{4, 0, 7, "7"},
        Cell{5, 0, 99, "none"}, Cell{-1, 0, 99, "none"}}) {
    EXPECT_DOUBLE_EQ(table.number(c.row, c.column, 99), c.number) << c.row << "," << c.column;
    EXPECT_EQ(table.text(c.row, c.column, "none"), c.text) << c.row << "," << c.column;
  }
  EXPECT_EQ(table.columnCount(1), 3);
}

TEST(CsvTable, WritesDefaultTextGrowsAndRoundTripsThroughFiles) {
  CsvTable table;
  table.setCell(0, 0, 1e6);
  table.setCell(0, 1, -3.141592);
  table.setCell(2, 1, QString("x"));
  table.setCell(3, 0, 1.0 / 3);
  table.setCell(3, 1, 42);
  const QByteArray text = "1e+06,-3.141592\n\n,x\n0.3333333333333333,42\n";
  EXPECT_EQ(table.toText(), text);

  QTemporaryDir dir;
  ASSERT_TRUE(table.save(dir.filePath("t.csv")));
  QFile file(dir.filePath("t.csv"));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_EQ(file.readAll(), text);
  CsvTable back;
  ASSERT_TRUE(back.load(dir.filePath("t.csv")));
  EXPECT_DOUBLE_EQ(back.number(3, 0), 1.0 / 3);
  EXPECT_FALSE(back.load(dir.filePath("missing.csv")));
  EXPECT_EQ(back.rowCount(), 4);
}

}  // namespace
