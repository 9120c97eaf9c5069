// SPDX-License-Identifier: MIT
// Editor of a bit pattern as text of "0" and "1": typed, inserted as PN, loaded or saved.
#include "digital/symbol_editor_dialog.h"

#include "digital/bit_sources.h"
#include "shell/file_dialogs.h"
#include "shell/message_box.h"
#include "widgets/double_edit.h"

#include <QFile>
#include <QHBoxLayout>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <tuple>

namespace {

int sharedSeed = 23;

const char* const openFailedText = "Unable to open file selected";

// The bytes of `path`, or false with the open-failure warning for a file that can't be opened
// or holds more than `limit` bytes; no more than one byte past the limit is read.
bool readBounded(QWidget* parent, const QString& path, qint64 limit, QByteArray& bytes) {
  QFile file(path);
  if (file.open(QIODevice::ReadOnly)) {
    bytes = file.read(limit + 1);
    if (bytes.size() <= limit) return true;
  }
  showWarning(parent, "Error", openFailedText);
  return false;
}

bool isHexCharacter(QChar c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// Four bits, most significant first, of "0" to "9" and "A" to "F"; nothing for the rest.
void appendNibble(QChar c, QString& out) {
  int value = -1;
  if (c >= '0' && c <= '9') value = c.unicode() - '0';
  if (c >= 'A' && c <= 'F') value = c.unicode() - 'A' + 10;
  if (value < 0) return;
  for (int bit = 3; bit >= 0; --bit) out += QChar((value >> bit) & 1 ? '1' : '0');
}

}  // namespace

SymbolEditorDialog::SymbolEditorDialog(QWidget* parent)
    : QDialog(parent),
      edit(new QPlainTextEdit(this)),
      sizeLabel(new QLabel(this)),
      cursorLabel(new QLabel(this)),
      seedEdit(new DoubleEdit(this)) {
  setWindowTitle("Symbol Editor");
  QFont font("Courier New", 12);
  font.setStyleHint(QFont::Monospace);  // where the face is missing, another fixed one
  edit->setFont(font);
  // A pattern has no word boundaries; looking for them takes quadratic time, minutes for a
  // long sequence, where breaking anywhere shows the same lines.
  edit->setWordWrapMode(QTextOption::WrapAnywhere);
  seedEdit->setValue(sharedSeed);

  auto* labels = new QHBoxLayout();
  labels->addWidget(sizeLabel);
  labels->addWidget(cursorLabel);
  labels->addStretch();
  labels->addWidget(new QLabel("Seed", this));
  labels->addWidget(seedEdit);

  auto* insertButtons = new QHBoxLayout();
  auto* fileButtons = new QHBoxLayout();
  const std::tuple<QHBoxLayout*, const char*, void (SymbolEditorDialog::*)()> actions[] = {
      {insertButtons, "1", &SymbolEditorDialog::addOne},
      {insertButtons, "0", &SymbolEditorDialog::addZero},
      {insertButtons, "Insert PN9", &SymbolEditorDialog::addPN9},
      {insertButtons, "Insert PN15", &SymbolEditorDialog::addPN15},
      {fileButtons, "Load Ascii File", &SymbolEditorDialog::loadAsciiData},
      {fileButtons, "Load Binary File", &SymbolEditorDialog::loadBinaryData},
      {fileButtons, "Save Data", &SymbolEditorDialog::saveData},
      {fileButtons, "Clear", &SymbolEditorDialog::clearEdit},
      {fileButtons, "Accept", &SymbolEditorDialog::accept}};
  for (const auto& [row, label, slot] : actions) {
    auto* button = new QPushButton(label, this);
    button->setAutoDefault(false);  // Return in the seed field must not press a button
    connect(button, &QPushButton::clicked, this, slot);
    row->addWidget(button);
  }

  auto* column = new QVBoxLayout(this);
  column->addWidget(edit);
  column->addLayout(labels);
  column->addLayout(insertButtons);
  column->addLayout(fileButtons);

  connect(edit, &QPlainTextEdit::textChanged, this, &SymbolEditorDialog::sizeChanged);
  connect(edit, &QPlainTextEdit::cursorPositionChanged, this, &SymbolEditorDialog::updateCursorPos);
  sizeChanged();
  updateCursorPos();
}

QString SymbolEditorDialog::text() const { return edit->toPlainText(); }

void SymbolEditorDialog::setText(const QString& text) { edit->setPlainText(text); }

void SymbolEditorDialog::insertAtCursor(const QString& text) {
  edit->insertPlainText(text);
  edit->setFocus();
}

void SymbolEditorDialog::clearEdit() {
  edit->clear();
  edit->setFocus();
}

void SymbolEditorDialog::addZero() { insertAtCursor("0"); }

void SymbolEditorDialog::addOne() { insertAtCursor("1"); }

void SymbolEditorDialog::addPN9() { addPN(9); }

void SymbolEditorDialog::addPN15() { addPN(15); }

void SymbolEditorDialog::addPN(int order) {
  const double typed = std::trunc(seedEdit->value());
  sharedSeed = std::isnan(typed) ? 0 : static_cast<int>(std::clamp(typed, 0.0, double{maxSeed}));
  seedEdit->setValue(sharedSeed);
  insertAtCursor(pnTextFromEditor(order, static_cast<uint32_t>(sharedSeed)));
}

void SymbolEditorDialog::sizeChanged() {
  // The document counts the closing paragraph separator of its last block as well; this
  // spares a copy of a long text at every key press.
  sizeLabel->setText(QString("Bits %1").arg(edit->document()->characterCount() - 1));
}

void SymbolEditorDialog::updateCursorPos() {
  cursorLabel->setText(QString("Cursor Pos %1").arg(edit->textCursor().position() + 1));
}

bool SymbolEditorDialog::loadAsciiFile(const QString& path) {
  QByteArray bytes;
  if (!readBounded(this, path, maxAsciiFileBytes, bytes)) return false;
  QString text = QString::fromUtf8(bytes).simplified().remove(' ');
  bool hexadecimal = false;
  for (const QChar c : qAsConst(text)) {
    if (!isHexCharacter(c)) {
      showWarning(this, "Invalid Data",
                  "Data in file loaded does not match acceptable input. Acceptable values are "
                  "zeros and ones only");
      return false;
    }
    hexadecimal = true;
  }
  if (hexadecimal) {
    QString bits;
    bits.reserve(text.size() * 4);
    for (const QChar c : qAsConst(text)) appendNibble(c, bits);
    text = bits;
  }
  setText(text);
  return true;
}

bool SymbolEditorDialog::loadBinaryFile(const QString& path) {
  QByteArray bytes;
  if (!readBounded(this, path, maxBinaryFileBytes, bytes)) return false;
  QString text(bytes.size() * 8, Qt::Uninitialized);
  QChar* out = text.data();
  for (const char byte : qAsConst(bytes))
    for (int bit = 7; bit >= 0; --bit)
      *out++ = QChar((static_cast<uchar>(byte) >> bit) & 1 ? '1' : '0');
  setText(text);
  return true;
}

bool SymbolEditorDialog::saveFile(const QString& path) {
  const QByteArray bytes = text().toUtf8();
  QFile file(path);
  if (file.open(QIODevice::WriteOnly | QIODevice::Truncate) && file.write(bytes) == bytes.size() &&
      file.flush())
    return true;
  showWarning(this, "Warning", "Unable to save to file location");
  return false;
}

void SymbolEditorDialog::saveData() {
  const QString path = saveFileName("Data File Save Name", "Test (*.txt)", this);
  if (!path.isEmpty()) saveFile(path);
}

void SymbolEditorDialog::loadAsciiData() {
  const QString path = openFileName("Data File", "Text (*.txt)", this);
  if (!path.isEmpty()) loadAsciiFile(path);
}

void SymbolEditorDialog::loadBinaryData() {
  const QString path = openFileName("Data File", "Binary (*.bin *.dat)", this);
  if (!path.isEmpty()) loadBinaryFile(path);
}
