// SPDX-License-Identifier: MIT
// Which INI files the program may open: regular files of a sane size.
#include "persist/settings_file.h"

#include <QFile>

#include <sys/stat.h>

namespace {

enum class FileKind { Absent, Usable, Oversized, NotRegular };

// stat, not open: opening a FIFO for reading is what blocks.
FileKind kindOf(const QString& path) {
  struct stat info {};
  if (::stat(QFile::encodeName(path).constData(), &info) != 0) return FileKind::Absent;
  if (!S_ISREG(info.st_mode)) return FileKind::NotRegular;
  return info.st_size > maxSettingsFileBytes ? FileKind::Oversized : FileKind::Usable;
}

}  // namespace

bool settingsFileReadable(const QString& path) {
  const FileKind kind = kindOf(path);
  return kind == FileKind::Absent || kind == FileKind::Usable;
}

bool settingsFileWritable(const QString& path) {
  switch (kindOf(path)) {
    case FileKind::Absent:
    case FileKind::Usable: return true;
    case FileKind::Oversized: return QFile::remove(path);
    case FileKind::NotRegular: return false;
  }
  return false;
}
