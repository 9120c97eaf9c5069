// SPDX-License-Identifier: MIT
// The error queue and its global entry points.
#include "shell/error_queue.h"

QString errorCodeText(int code) {
  switch (code) {
    case 0: return "No error";
    case -1: return "Setting clamped";
    case -2: return "Invalid parameter";
    case -3: return "Too few parameters";
    case -4: return "Undefined header";
    case -5: return "Unsupported";
    case -6: return "Invalid operation";
    case -100: return "Unable to save file";
    default: return "Unknown error";
  }
}

void ErrorQueue::put(int code, const QString& message) {
  ErrorLogEntry entry{code, errorCodeText(code), message, QDateTime::currentDateTime()};
  {
    std::lock_guard<std::mutex> lock(mutex);
    while (list.size() >= maxEntries) list.removeLast();
    list.append(entry);
  }
  emit listChanged();
}

void ErrorQueue::clear() {
  {
    std::lock_guard<std::mutex> lock(mutex);
    list.clear();
  }
  emit listChanged();
}

int ErrorQueue::count() const {
  std::lock_guard<std::mutex> lock(mutex);
  return list.size();
}

QString ErrorQueue::next() {
  ErrorLogEntry entry{0, "No Error", QString(), QDateTime::currentDateTime()};
  {
    std::lock_guard<std::mutex> lock(mutex);
    if (!list.isEmpty()) entry = list.takeFirst();
  }
  // No listChanged here: the window keeps showing a taken entry until the next change.
  return QString("%1,").arg(entry.code) + entry.codeText + ";" + entry.message;
}

QList<ErrorLogEntry> ErrorQueue::entries() const {
  std::lock_guard<std::mutex> lock(mutex);
  return list;
}

ErrorQueue& errorQueue() {
  static ErrorQueue queue;
  return queue;
}

void errorLogPut(int code, const QString& message) { errorQueue().put(code, message); }
void errorLogClear() { errorQueue().clear(); }
int errorLogCount() { return errorQueue().count(); }
QString errorLogNext() { return errorQueue().next(); }

void putDeviceMessage(int code, const char* message) {
  errorLogPut(code, QString::fromUtf8(message ? message : ""));
}
