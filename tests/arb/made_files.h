// SPDX-License-Identifier: MIT
// A scratch directory where the reader tests have outside tools write their input files.
#pragma once

#include <QFile>
#include <QTemporaryDir>
#include <QtEndian>

#include <cstdlib>

// The files come from Python's own modules, numpy and sox, writers that share no code or
// assumption with the readers.
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
};

template <class T>
QByteArray littleEndian(T v) {
  QByteArray b(sizeof v, '\0');
  qToLittleEndian(v, b.data());
  return b;
}
