// SPDX-License-Identifier: MIT
// The "Error Info" window over the process-wide error queue.
#include "shell/error_log.h"

#include "shell/error_queue.h"

#include <QHBoxLayout>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

ErrorLog::ErrorLog(QWidget* parent) : QDialog(parent) {
  setWindowTitle("Error Info");
  setObjectName("TK_Page");
  setModal(false);
  resize(400, 250);

  textView = new QPlainTextEdit(this);
  textView->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::LinksAccessibleByMouse);
  textView->setLineWrapMode(QPlainTextEdit::NoWrap);
  auto* clearButton = new QPushButton("Clear", this);
  clearButton->setFixedWidth(150);

  auto* buttonRow = new QHBoxLayout;
  buttonRow->addStretch();
  buttonRow->addWidget(clearButton);
  auto* column = new QVBoxLayout(this);
  column->addWidget(textView);
  column->addLayout(buttonRow);

  connect(clearButton, &QPushButton::clicked, this, &ErrorLog::clearList);
  // Puts from other threads reach the widgets through a queued call on this thread.
  connect(&errorQueue(), &ErrorQueue::listChanged, this, &ErrorLog::updateList);
  updateList();
}

QString ErrorLog::text() const { return textView->toPlainText(); }

void ErrorLog::clearList() { errorLogClear(); }

void ErrorLog::updateList() {
  const QList<ErrorLogEntry> entries = errorQueue().entries();
  if (entries.isEmpty()) {
    textView->setPlainText("No Errors");
    return;
  }
  QString text;
  for (const ErrorLogEntry& e : entries) {
    text += e.time.toString("MMM dd yyyy  HH:mm\n");
    text += QString::number(e.code) + ",  " + e.codeText + ",  " + e.message;
    text += "\n\n";
  }
  textView->setPlainText(text);
}
