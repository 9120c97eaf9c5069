// SPDX-License-Identifier: MIT
// A scratch directory where the reader tests have outside tools write their input files.
#pragma once

#include <QByteArray>
#include <QFile>
#include <QTemporaryDir>

#include <cstdlib>

// The files are made by Python's own modules, numpy and sox, so that the readers are checked
// against writers that share no code or assumption with them.
struct MadeFiles {
  QTemporaryDir dir;

  QString path(const char* name) const { return dir.filePath(QString::fromLatin1(name)); }

  // Runs a shell command in the directory; true when it exits 0.
  bool run(const QByteArray& command) const {
    const QByteArray line = "cd '" + QFile::encodeName(dir.path()) + "' && " + command;
    return std::system(line.constData()) == 0;
  }

  bool python(const QByteArray& script) const {
    write("make.py", script);
    return run("/usr/bin/python3 make.py");
  }

  void write(const char* name, const QByteArray& bytes) const {
    QFile file(path(name));
    if (file.open(QIODevice::WriteOnly)) file.write(bytes);
  }

  QByteArray bytes(const char* name) const {
    QFile file(path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }
};
