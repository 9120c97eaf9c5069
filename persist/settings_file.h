// SPDX-License-Identifier: MIT
// Which INI files the program may open: regular files of a sane size.
#pragma once

#include <QString>

// A preset or preference file is read only if it is a regular file of at most this size: a
// FIFO would block the program for ever, and a file of a million keys would stall every read
// and every write of it. Real files hold a few hundred keys.
constexpr qint64 maxSettingsFileBytes = 4 << 20;

// True if `path` is absent or a regular file within the size limit.
bool settingsFileReadable(const QString& path);
// True if `path` may be written: absent, a regular file within the limit, or an oversized
// regular file, which is removed first. A FIFO, device or directory is left alone.
bool settingsFileWritable(const QString& path);
