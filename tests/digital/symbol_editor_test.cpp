// SPDX-License-Identifier: MIT
// SymbolEditorDialog (inserts, the shared seed, pattern files) and SymbolLineEdit.
#include "digital/symbol_editor_dialog.h"
#include "digital/symbol_line_edit.h"

#include "shell/message_box.h"
#include "support/warnings.h"
#include "widgets/double_edit.h"

#include <QFile>
#include <QLabel>
#include <QPlainTextEdit>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace {

QString labelStartingWith(const QDialog& dialog, const QString& start) {
  for (const QLabel* label : dialog.findChildren<QLabel*>())
    if (label->text().startsWith(start)) return label->text();
  return {};
}

const char* const openError = "Error: Unable to open file selected";
const char* const invalidData =
    "Invalid Data: Data in file loaded does not match acceptable input. Acceptable values are "
    "zeros and ones only";

TEST(SymbolEditorDialog, InsertsAtTheCursorWithTheSharedSeed) {
  SymbolEditorDialog dialog;
  EXPECT_EQ(dialog.windowTitle(), "Symbol Editor");
  auto* edit = dialog.findChild<QPlainTextEdit*>();
  auto* seed = dialog.findChild<DoubleEdit*>();
  dialog.setText("10");
  QTextCursor cursor = edit->textCursor();
  cursor.setPosition(1);
  edit->setTextCursor(cursor);

  seed->setValue(23.9);  // truncated
  dialog.addPN9();
  EXPECT_EQ(seed->text(), "23");
  const QString text = dialog.text();
  EXPECT_EQ(text.size(), 513);
  EXPECT_TRUE(text.startsWith("1011111000")) << text.left(10).toStdString();
  EXPECT_EQ(labelStartingWith(dialog, "Bits "), "Bits 513");
  EXPECT_EQ(labelStartingWith(dialog, "Cursor Pos "), "Cursor Pos 513");
  dialog.addOne();
  dialog.addZero();
  // The period ends on the seed's state, whose lowest bit is 1; then the two inserts.
  EXPECT_EQ(dialog.text().mid(511, 4).toStdString(), "1100");

  dialog.clearEdit();
  seed->setValue(5e9);
  dialog.addPN15();  // limited to 0x40000000, which the register of 15 bits sees as 0
  EXPECT_EQ(dialog.text(), "0");
  EXPECT_EQ(seed->value(), 0x40000000);
  SymbolEditorDialog next;
  EXPECT_EQ(next.findChild<DoubleEdit*>()->value(), 0x40000000);  // shared by all dialogs
  seed->setValue(-7);
  dialog.addPN9();
  EXPECT_EQ(seed->value(), 0);
}

TEST(SymbolEditorDialog, LoadsAndSavesPatternFiles) {
  QTemporaryDir dir;
  const struct {
    bool binary;
    QByteArray content;
    const char* text;     // after the load
    const char* warning;  // or nullptr
  } cases[] = {
      {false, "101", "000100000001", nullptr},
      {false, "0101", "0000000100000001", nullptr},
      {false, " 1\n0 \t\r\nF ", "000100001111", nullptr},
      {false, "1x", "kept", invalidData},
      {false, "1\xc3\xa9", "kept", invalidData},
      {false, "ab", "", nullptr},  // lower case passes and expands to nothing
      {false, "", "", nullptr},
      {true, "\x80", "10000000", nullptr},
      {true, QByteArray("\x01\x00\xa5", 3), "000000010000000010100101", nullptr},
  };
  Warnings warnings;
  SymbolEditorDialog dialog;
  for (const auto& c : cases) {
    QFile file(dir.filePath("pattern"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(c.content);
    file.close();
    dialog.setText("kept");
    warnings.shown.clear();
    const bool loaded =
        c.binary ? dialog.loadBinaryFile(file.fileName()) : dialog.loadAsciiFile(file.fileName());
    EXPECT_EQ(loaded, c.warning == nullptr) << c.content.toStdString();
    EXPECT_EQ(dialog.text(), c.text) << c.content.toStdString();
    EXPECT_EQ(warnings.shown, c.warning ? QStringList{c.warning} : QStringList{})
        << c.content.toStdString();
  }

  dialog.setText("0110\n1");
  ASSERT_TRUE(dialog.saveFile(dir.filePath("out.txt")));
  QFile saved(dir.filePath("out.txt"));
  ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
  EXPECT_EQ(saved.readAll(), QByteArray("0110\n1"));
  EXPECT_EQ(labelStartingWith(dialog, "Bits "), "Bits 6");

  // Missing, a folder, and files past the limits all fail to open.
  QFile big(dir.filePath("big"));
  ASSERT_TRUE(big.open(QIODevice::WriteOnly));
  ASSERT_TRUE(big.resize(SymbolEditorDialog::maxBinaryFileBytes + 1));
  big.close();
  warnings.shown.clear();
  EXPECT_FALSE(dialog.loadAsciiFile(dir.filePath("missing.txt")));
  EXPECT_FALSE(dialog.loadBinaryFile(dir.path()));
  EXPECT_FALSE(dialog.loadBinaryFile(big.fileName()));
  ASSERT_TRUE(big.resize(SymbolEditorDialog::maxAsciiFileBytes + 1));
  EXPECT_FALSE(dialog.loadAsciiFile(big.fileName()));
  EXPECT_FALSE(dialog.saveFile(dir.filePath("no/such/folder.txt")));
  EXPECT_EQ(warnings.shown, QStringList({openError, openError, openError, openError,
                                         "Warning: Unable to save to file location"}));
  EXPECT_EQ(dialog.text(), "0110\n1");
}

// Closes the editor at once, after `change`, without blocking.
class ScriptedSymbolLineEdit : public SymbolLineEdit {
public:
  std::function<void(SymbolEditorDialog&)> change;
  QString seenPattern;

protected:
  void runEditor(SymbolEditorDialog& dialog) override {
    seenPattern = dialog.text();
    change(dialog);
  }
};

TEST(SymbolLineEdit, TakesTheEditorsTextAcceptedOrNot) {
  ScriptedSymbolLineEdit field;
  QSignalSpy updated(&field, &SymbolLineEdit::dataUpdated);
  field.setPattern("0110");
  EXPECT_EQ(field.text(), "4 bits");

  field.change = [](SymbolEditorDialog& dialog) {
    dialog.clearEdit();
    dialog.accept();
  };
  QTest::mouseClick(&field, Qt::LeftButton);
  EXPECT_EQ(field.seenPattern, "0110");
  EXPECT_EQ(field.pattern(), "0");
  EXPECT_EQ(field.text(), "1 bits");
  EXPECT_EQ(updated.count(), 1);

  field.change = [](SymbolEditorDialog& dialog) {
    dialog.setText("10101");
    dialog.reject();
  };
  QTest::mouseClick(&field, Qt::LeftButton);
  EXPECT_EQ(field.pattern(), "10101");
  EXPECT_EQ(field.text(), "5 bits");
  EXPECT_EQ(updated.count(), 2);
}

}  // namespace
