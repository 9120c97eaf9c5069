// SPDX-License-Identifier: MIT
// Comma-separated table of variants, as read and written for tone, filter and modulation files.
#include "modes/csv_table.h"

#include <QFile>
#include <QFileInfo>
#include <QIODevice>
#include <QStringList>
#include <QTextStream>

int CsvTable::columnCount(int row) const {
  return row >= 0 && row < rows.size() ? rows[row].size() : 0;
}

QVariant CsvTable::cell(int row, int column, const QVariant& fallback) const {
  if (column < 0 || column >= columnCount(row)) return fallback;
  return rows[row][column];
}

double CsvTable::number(int row, int column, double fallback) const {
  if (column < 0 || column >= columnCount(row)) return fallback;
  return rows[row][column].toDouble();
}

QString CsvTable::text(int row, int column, const QString& fallback) const {
  if (column < 0 || column >= columnCount(row)) return fallback;
  return rows[row][column].toString();
}

void CsvTable::setCell(int row, int column, const QVariant& value) {
  if (row < 0 || column < 0) return;
  if (row >= rows.size()) rows.resize(row + 1);
  QVector<QVariant>& fields = rows[row];
  if (column >= fields.size()) fields.resize(column + 1);
  fields[column] = value;
}

void CsvTable::parse(const QString& text) {
  QString content = text;
  QTextStream in(&content, QIODevice::ReadOnly);
  rows.clear();
  QString line;
  while (in.readLineInto(&line)) {
    QVector<QVariant> fields;
    for (const QString& field : line.split(',', Qt::KeepEmptyParts)) fields.append(field);
    rows.append(fields);
  }
}

QString CsvTable::toText() const {
  QString out;
  for (const QVector<QVariant>& fields : rows) {
    for (int c = 0; c < fields.size(); ++c) {
      if (c > 0) out += ',';
      out += fields[c].toString();
    }
    out += '\n';
  }
  return out;
}

bool CsvTable::read(QIODevice& device) {
  if (!device.isReadable()) return false;
  parse(QString::fromUtf8(device.readAll()));
  return true;
}

bool CsvTable::write(QIODevice& device) const {
  if (!device.isWritable()) return false;
  const QByteArray bytes = toText().toUtf8();
  return device.write(bytes) == bytes.size();
}

bool CsvTable::load(const QString& path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) return false;
  return read(file);
}

bool CsvTable::loadBounded(const QString& path, qint64 maxBytes, int maxLines) {
  if (!QFileInfo(path).isFile()) return false;
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly) || file.size() > maxBytes) return false;
  QByteArray bytes = file.read(maxBytes + 1);
  if (bytes.size() > maxBytes) return false;
  int end = -1;
  for (int line = 0; line < maxLines; ++line) {
    end = bytes.indexOf('\n', end + 1);
    if (end < 0) break;
  }
  if (end >= 0) bytes.truncate(end + 1);
  parse(QString::fromUtf8(bytes));
  return true;
}

bool CsvTable::save(const QString& path) const {
  QFile file(path);
  if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Text)) return false;
  return write(file);
}
