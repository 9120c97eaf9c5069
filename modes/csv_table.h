// SPDX-License-Identifier: MIT
// Comma-separated table of variants, as read and written for tone, filter and modulation files.
#pragma once

#include <QString>
#include <QVariant>
#include <QVector>

class QIODevice;

// One record a line, fields separated by ",". Reading keeps empty fields and converts on
// demand; a cell beyond a line's field count yields the caller's default. Writing prints each
// value in its default text form, a comma only between fields and "\n" after each record.
// There is no quoting: a field can't hold a comma or a line break.
class CsvTable {
public:
  int rowCount() const { return rows.size(); }
  // Fields of `row`; 0 for a row that doesn't exist.
  int columnCount(int row) const;

  // The cell as stored (text after reading, whatever was set otherwise), or `fallback`.
  QVariant cell(int row, int column, const QVariant& fallback = QVariant()) const;
  // The cell as a number, or `fallback` for a cell that doesn't exist. Text that isn't a
  // number reads as 0, as the variant converts it.
  double number(int row, int column, double fallback = 0.0) const;
  QString text(int row, int column, const QString& fallback = QString()) const;

  // Grows the table (with empty cells) as far as needed.
  void setCell(int row, int column, const QVariant& value);
  void clear() { rows.clear(); }

  // Replaces the content with the records of `text`; a final line break ends the last record
  // and starts none. "\r\n" counts as a line break.
  void parse(const QString& text);
  QString toText() const;

  // False, with the table unchanged, when the file can't be opened.
  bool load(const QString& path);
  bool save(const QString& path) const;
  // For files a user picks: false, with the table unchanged, for what isn't a plain file (a
  // device or a pipe could be endless), can't be opened or holds more than `maxBytes`. Only the
  // first `maxLines` records are parsed: the rest can't matter to a reader that stops there.
  bool loadBounded(const QString& path, qint64 maxBytes, int maxLines);
  bool read(QIODevice& device);
  bool write(QIODevice& device) const;

private:
  QVector<QVector<QVariant>> rows;
};
