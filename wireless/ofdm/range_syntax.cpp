// SPDX-License-Identifier: MIT
// The text forms of the OFDM editors: integer ranges and I/Q lists.
#include "wireless/ofdm/range_syntax.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

namespace {

bool toInt(const QString& piece, int& value) {
  bool ok = false;
  value = piece.toInt(&ok, 10);
  return ok;
}

// Appends the integers of one blank-free part; false when the part is invalid.
bool appendPart(const QString& part, std::vector<int>& list) {
  const QStringList pieces = part.split(':', Qt::KeepEmptyParts);
  int first = 0;
  int last = 0;
  if (pieces.size() > 2 || !toInt(pieces[0], first)) return false;
  if (pieces.size() == 1) {
    list.push_back(first);
    return list.size() <= maxRangeValues;
  }
  if (!toInt(pieces[1], last) || first > last) return false;
  const long long span = static_cast<long long>(last) - first + 1;
  if (span > maxRangeSpan || list.size() + span > maxRangeValues) return false;
  for (long long v = first; v <= last; ++v) list.push_back(static_cast<int>(v));
  return true;
}

}  // namespace

bool parseRange(const QString& text, std::vector<int>& list) {
  static const QRegularExpression blanks("\\s");
  list.clear();
  bool valid = true;
  for (QString part : text.split(',', Qt::SkipEmptyParts)) {
    part.remove(blanks);
    if (part.isEmpty()) continue;
    if (!appendPart(part, list)) {
      valid = false;
      break;
    }
  }
  std::sort(list.begin(), list.end());
  list.erase(std::unique(list.begin(), list.end()), list.end());
  return valid;
}

bool parseIqList(const QString& text, std::vector<Sample>& values) {
  values.clear();
  std::vector<float> numbers;
  bool valid = true;
  for (const QString& part : text.split(',', Qt::SkipEmptyParts)) {
    bool ok = false;
    const float v = part.toFloat(&ok);
    if (!ok) {
      valid = false;
      break;
    }
    numbers.push_back(v);
  }
  // After a bad part only whole pairs count: a lone I before it is dropped.
  if (!valid && numbers.size() % 2) numbers.pop_back();
  for (size_t i = 0; i < numbers.size(); i += 2)
    values.emplace_back(numbers[i], i + 1 < numbers.size() ? numbers[i + 1] : 0.0f);
  return valid;
}

QString iqListText(const std::vector<Sample>& values) {
  QStringList parts;
  for (const Sample& v : values)
    parts << QString::number(v.real(), 'g', 9) << QString::number(v.imag(), 'g', 9);
  return parts.join(", ");
}
