// SPDX-License-Identifier: MIT
// The error queue shared by the error log window and the remote interface.
#pragma once

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QString>

#include <mutex>

struct ErrorLogEntry {
  int code = 0;
  QString codeText;
  QString message;
  QDateTime time;
};

// Fixed text of an error code; "Unknown error" for codes outside the table.
QString errorCodeText(int code);

// Thread-safe list of entries, oldest first. A full queue keeps its oldest entries, which a
// remote client reads first, and replaces only its newest one.
class ErrorQueue : public QObject {
  Q_OBJECT
public:
  static constexpr int maxEntries = 100;

  void put(int code, const QString& message);
  void clear();
  int count() const;
  // Removes the oldest entry and returns its reply text, "0,No Error;" when empty.
  QString next();
  QList<ErrorLogEntry> entries() const;

signals:
  void listChanged();

private:
  mutable std::mutex mutex;
  QList<ErrorLogEntry> list;
};

// The process-wide queue behind the global entry points.
ErrorQueue& errorQueue();

// Global entry points, callable from any thread.
void errorLogPut(int code, const QString& message);
void errorLogClear();
int errorLogCount();
QString errorLogNext();

// The device library's messages for the user (krtSetMessageHandler), callable from any thread.
void putDeviceMessage(int code, const char* message);
