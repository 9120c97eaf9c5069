// SPDX-License-Identifier: MIT
// Editor of a bit pattern as text of "0" and "1": typed, inserted as PN, loaded or saved.
#pragma once

#include <QDialog>
#include <QString>

class DoubleEdit;
class QLabel;
class QPlainTextEdit;

// Modal, for one exec. The seed of the "Insert" buttons is shared by all dialogs for the
// program's run, starting at 23.
class SymbolEditorDialog : public QDialog {
  Q_OBJECT

public:
  explicit SymbolEditorDialog(QWidget* parent = nullptr);

  QString text() const;
  void setText(const QString& text);

  // What the load and save slots do once the file dialog has given a name. Each failure shows
  // its warning, leaves the text as it was and returns false.
  // Text: white space removed; "0" to "9" and "A" to "F" become their four bits, most
  // significant first, "a" to "f" pass but become nothing; any other character is refused.
  bool loadAsciiFile(const QString& path);
  // Binary: every byte becomes eight characters, most significant bit first.
  bool loadBinaryFile(const QString& path);
  // The text as it stands, without a line end.
  bool saveFile(const QString& path);

  // Larger files are refused as unopenable, having read one byte past the limit, so that no load
  // gives more than 2^23 characters: the longest sequence the modes use (8,388,607 bits) and one
  // more, which the editor lays out in seconds. A text file's character becomes at most four, a
  // byte of a binary file eight.
  static constexpr qint64 maxAsciiFileBytes = qint64{1} << 21;
  static constexpr qint64 maxBinaryFileBytes = qint64{1} << 20;
  // The upper limit of the seed of "Insert PN9" and "Insert PN15".
  static constexpr int maxSeed = 0x40000000;

public slots:
  void clearEdit();
  void addZero();
  void addOne();
  void addPN9();
  void addPN15();
  void sizeChanged();
  void updateCursorPos();
  void saveData();
  void loadAsciiData();
  void loadBinaryData();

private:
  void insertAtCursor(const QString& text);
  void addPN(int order);

  QPlainTextEdit* edit;
  QLabel* sizeLabel;
  QLabel* cursorLabel;
  DoubleEdit* seedEdit;
};
