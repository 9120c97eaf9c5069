// SPDX-License-Identifier: MIT
// MtoneEditor: rows, validation limits, and the tone table as CSV.
#include "modes/multitone/mtone_editor.h"

#include "widgets/frequency_edit.h"

#include <QFile>
#include <QTableWidget>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

TEST(MtoneEditor, RowsCellsAndValidation) {
  MtoneEditor editor;
  ASSERT_EQ(editor.rowCount(), 1);
  auto* cell = qobject_cast<FrequencyEdit*>(editor.findChild<QTableWidget*>()->cellWidget(0, 0));
  ASSERT_NE(cell, nullptr);
  EXPECT_EQ(cell->styleSheet(), "QLineEdit { border: 0px; }");
  EXPECT_EQ(cell->focusPolicy(), Qt::StrongFocus);

  const double rows[][4] = {{2e6, 4.0, 1e6, 3.141592},
                            {-2e6, -4.0, -1e6, -3.141592},
                            {-999999.5, 3.1415926, -999999.5, 3.141592},  // pi lies past the limit
                            {12.5, -0.5, 12.5, -0.5}};
  for (int i = 1; i < 4; ++i) editor.addRow();
  for (int i = 0; i < 4; ++i) editor.setRow(i, rows[i][0], rows[i][1]);
  // An entry in any cell validates the whole table.
  cell->setText("3 MHz");
  emit cell->editingFinished();
  for (int i = 0; i < 4; ++i) {
    EXPECT_DOUBLE_EQ(editor.frequency(i), rows[i][2]) << i;
    EXPECT_DOUBLE_EQ(editor.phase(i), rows[i][3]) << i;
  }

  editor.removeRow();
  EXPECT_EQ(editor.rowCount(), 3);
  EXPECT_DOUBLE_EQ(editor.frequency(2), -999999.5);
  for (int i = 0; i < 5; ++i) editor.removeRow();
  EXPECT_EQ(editor.rowCount(), 1);
  editor.addRow();
  editor.clearTable();
  EXPECT_EQ(editor.rowCount(), 1);
  EXPECT_DOUBLE_EQ(editor.frequency(0), 0.0);

  editor.setRow(0, -3e6, 0.0);
  editor.finalValidate();
  EXPECT_DOUBLE_EQ(editor.frequency(0), -1e6);
  EXPECT_EQ(editor.result(), QDialog::Accepted);
}

TEST(MtoneEditor, TablesLoadValidatedAndSaveAsCsv) {
  QTemporaryDir dir;
  QFile in(dir.filePath("in.csv"));
  ASSERT_TRUE(in.open(QIODevice::WriteOnly));
  in.write("250000,0.5\n-2e6,-4\n7\n\n1.5,2,extra\n");  // missing fields count as 0
  in.close();
  MtoneEditor editor;
  ASSERT_TRUE(editor.loadTableFile(in.fileName()));
  ASSERT_TRUE(editor.saveTableFile(dir.filePath("out.csv")));
  QFile out(dir.filePath("out.csv"));
  ASSERT_TRUE(out.open(QIODevice::ReadOnly));
  EXPECT_EQ(out.readAll(), QByteArray("250000,0.5\n-1e+06,-3.141592\n7,0\n0,0\n1.5,2\n"));

  EXPECT_FALSE(editor.loadTableFile(dir.filePath("missing.csv")));  // the table stays
  EXPECT_EQ(editor.rowCount(), 5);
}

}  // namespace
