// SPDX-License-Identifier: MIT
// SCPI line framing, header matching, typed parameter readers and reply assembly.
#include "remote/scpi.h"

#include <QRegularExpression>

#include <cmath>
#include <exception>

namespace {

// A header keyword prepared once per segment, so that every row compares the same text.
struct HeaderKeyword {
  QString stem;     // lower-cased, trailing decimal digits removed
  int suffix = -1;  // value of those digits; -1 when there were none
};

bool isAsciiDigit(QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); }

ScpiKeyword compileKeyword(QString piece) {
  static const QRegularExpression lowerCaseLetter(QStringLiteral("[a-z]"));
  ScpiKeyword keyword;
  if (piece.startsWith(QLatin1Char('&'))) {
    keyword.optional = true;
    piece.remove(0, 1);
  }
  if (piece.endsWith(QLatin1Char('#'))) {
    keyword.numericSuffix = true;
    piece.chop(1);
  }
  keyword.shortForm = QString(piece).remove(lowerCaseLetter).toLower();
  keyword.longForm = piece.toLower();
  return keyword;
}

// A query is its command's keywords plus a mandatory "?", so a set row never takes a query.
ScpiCommandEntry compileRow(const ScpiCommandSpec& row) {
  QString pattern = QString::fromLatin1(row.pattern);
  const bool query = pattern.endsWith(QLatin1Char('?'));
  if (query) pattern.chop(1);
  ScpiCommandEntry entry;
  entry.id = row.id;
  for (const QString& piece : pattern.split(QLatin1Char(':'), Qt::SkipEmptyParts))
    entry.keywords.push_back(compileKeyword(piece));
  if (query) entry.keywords.push_back({QStringLiteral("?"), QStringLiteral("?"), false, false});
  return entry;
}

HeaderKeyword prepareKeyword(const QString& text) {
  HeaderKeyword keyword{text.toLower(), -1};
  const QString& stem = keyword.stem;
  int digits = 0;
  while (digits < stem.size() && isAsciiDigit(stem.at(stem.size() - 1 - digits))) ++digits;
  if (digits > 0) {
    keyword.suffix = qMax(0, keyword.stem.rightRef(digits).toInt());  // 0 when too long for int
    keyword.stem.chop(digits);
  }
  return keyword;
}

bool allOptionalFrom(const std::vector<ScpiKeyword>& keywords, size_t from) {
  for (size_t i = from; i < keywords.size(); ++i)
    if (!keywords[i].optional) return false;
  return true;
}

// Optional row keywords may be skipped, but a header keyword with digits fails at once
// against a keyword without "#", optional or not.
bool rowMatches(const ScpiCommandEntry& row, const std::vector<HeaderKeyword>& header,
                QList<int>& suffixes) {
  size_t h = 0;
  size_t r = 0;
  for (;;) {
    if (h == header.size()) return allOptionalFrom(row.keywords, r);
    if (r == row.keywords.size()) return false;
    const HeaderKeyword& given = header[h];
    const ScpiKeyword& wanted = row.keywords[r];
    if (given.suffix >= 0 && !wanted.numericSuffix) return false;
    if (given.stem == wanted.shortForm || given.stem == wanted.longForm) {
      if (wanted.numericSuffix) suffixes.append(given.suffix);
      ++h;
      ++r;
    } else if (wanted.optional) {
      ++r;
    } else {
      return false;
    }
  }
}

// Parameters are cut at every ",", quoted or not, and empty ones are kept: "1,,2" is three.
QStringList splitParameters(const QString& rest) {
  QStringList list = rest.split(QLatin1Char(','));
  for (QString& parameter : list) parameter = parameter.trimmed();
  if (list.size() == 1 && list.first().isEmpty()) list.clear();
  return list;
}

// The path is cut by the pattern, not by what the client wrote: after a row ending in an
// optional keyword the path still holds the keyword before it.
QStringList pathAfter(const ScpiCommandEntry& row) {
  int keep = int(row.keywords.size()) - 1;
  if (keep >= 0 && row.keywords.back().longForm == QLatin1String("?")) --keep;
  QStringList path;
  for (int i = 0; i < keep; ++i) path.append(row.keywords[size_t(i)].shortForm);
  return path;
}

// Seconds per unit of a bare number, picked from the value the field held before.
double defaultTimeDivisor(double start) {
  if (!(start < 1.0)) return 1.0;  // not a number counts as seconds too
  return start >= 0.001 ? 1e3 : 1e6;
}

// A sign or an exponent is not part of the number: "-1" fails and "1e3" is 1 of unit "e3".
bool parseDuration(QString text, double start, double& seconds) {
  static const struct {
    const char* word;
    double divisor;
  } units[] = {{"u", 1e6}, {"us", 1e6}, {"m", 1e3}, {"ms", 1e3}, {"s", 1.0}};
  text.remove(QLatin1Char(' '));
  if (text.isEmpty()) return false;
  int length = 0;
  for (; length < text.size(); ++length) {
    const QChar c = text.at(length);
    if (!isAsciiDigit(c) && c != QLatin1Char('.')) break;
  }
  bool ok = false;
  const double number = text.leftRef(length).toDouble(&ok);
  if (!ok) return false;
  const QString unit = text.mid(length).toLower();
  double divisor = defaultTimeDivisor(start);
  for (const auto& candidate : units) {
    if (unit == QLatin1String(candidate.word)) {
      divisor = candidate.divisor;
      break;
    }
  }
  seconds = number / divisor;
  return true;
}

// Hertz per unit word; 0 for a word that is no frequency unit. "m" is mega.
double frequencyFactor(const QString& unit) {
  static const struct {
    const char* word;
    double factor;
  } units[] = {{"h", 1.0},  {"hz", 1.0},  {"k", 1e3}, {"kh", 1e3}, {"khz", 1e3}, {"m", 1e6},
               {"mh", 1e6}, {"mhz", 1e6}, {"g", 1e9}, {"gh", 1e9}, {"ghz", 1e9}};
  for (const auto& candidate : units)
    if (unit == QLatin1String(candidate.word)) return candidate.factor;
  return 0.0;
}

}  // namespace

Scpi::Scpi() : Scpi(scpiCommandTable, scpiCommandCount) {}

Scpi::Scpi(const ScpiCommandSpec* table, int count) { compile(table, count); }

void Scpi::compile(const ScpiCommandSpec* table, int count) {
  commands.reserve(size_t(qMax(0, count)));
  for (int i = 0; i < count; ++i) commands.push_back(compileRow(table[i]));
}

void Scpi::setHandler(Handler newHandler) { handler = std::move(newHandler); }

void Scpi::setSocket(QIODevice* newSocket) {
  if (newSocket == socket) return;
  socket = newSocket;
  ++socketGeneration;
}

void Scpi::feed(const QString& text) {
  // The text came from the client of this moment; its replies go to it or nowhere.
  const quint64 generation = socketGeneration;
  int start = 0;
  for (int i = 0; i < text.size(); ++i) {
    const QChar c = text.at(i);
    if (c != QLatin1Char('\n') && c != QLatin1Char('\r')) continue;
    lineBuffer.append(text.midRef(start, i - start));
    start = i + 1;
    if (c == QLatin1Char('\n')) runBufferedLine(generation);
  }
  lineBuffer.append(text.midRef(start));
}

void Scpi::runBufferedLine(quint64 generation) {
  QString line;
  line.swap(lineBuffer);  // also gives back the memory of a long line
  try {
    runLine(line, generation);
  } catch (const std::exception&) {
    // An empty handler throws. The rest of the line is lost, and nothing of it may leak
    // into the next one.
    parameters.clear();
    reply.clear();
    output.clear();
  }
}

void Scpi::parseLine(const QString& line) { runLine(line, socketGeneration); }

void Scpi::runLine(const QString& line, quint64 generation) {
  QStringList path;
  for (const QString& segment : line.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
    runSegment(segment, path);
    // A command without an answer after an earlier answer still leaves its ";".
    if (!output.isEmpty()) output.append(';');
    output.append(reply);
    reply.clear();
  }
  if (output.isEmpty()) return;
  if (socket && generation == socketGeneration) {
    output.append('\n');
    socket->write(output);  // one write, never waited for; a failure is ignored
  }
  output.clear();
}

void Scpi::runSegment(const QString& segment, QStringList& path) {
  const QString text = segment.trimmed();
  // Only a blank (32) separates header and parameters; a tab stays in the header.
  const int blank = text.indexOf(QLatin1Char(' '));
  const QString header = (blank < 0 ? text : text.left(blank)).trimmed();
  if (header.isEmpty()) return;  // a segment of white space matches no row
  if (header.startsWith(QLatin1Char(':')) || header.startsWith(QLatin1Char('*'))) path.clear();
  QList<int> suffixes;
  const ScpiCommandEntry* row = findRow(path, header, suffixes);
  if (!row) return;  // an unknown header is skipped in silence
  parameters = splitParameters(blank < 0 ? QString() : text.mid(blank + 1));
  numericSuffixes = suffixes;
  matchedId = row->id;
  handler(this);  // std::bad_function_call when no handler is set, caught in feed
  parameters.clear();
  path = pathAfter(*row);
}

const ScpiCommandEntry* Scpi::findRow(const QStringList& path, const QString& header,
                                      QList<int>& suffixes) const {
  QStringList words = path + header.split(QLatin1Char(':'), Qt::SkipEmptyParts);
  if (!words.isEmpty() && words.last().endsWith(QLatin1Char('?'))) {
    words.last().chop(1);
    words.append(QStringLiteral("?"));
  }
  std::vector<HeaderKeyword> keywords;
  keywords.reserve(size_t(words.size()));
  for (const QString& word : words) keywords.push_back(prepareKeyword(word));
  for (const ScpiCommandEntry& row : commands) {
    suffixes.clear();
    if (rowMatches(row, keywords, suffixes)) return &row;
  }
  return nullptr;
}

void Scpi::addResponse(const QString& text) {
  if (!reply.isEmpty()) reply.append(',');
  reply.append(text.toUtf8());
}

QString Scpi::firstParameterKey() const {
  return parameters.isEmpty() ? QString() : parameters.first().trimmed().toLower();
}

bool Scpi::isUp() const { return firstParameterKey() == QLatin1String("up"); }

bool Scpi::isDown() const { return firstParameterKey() == QLatin1String("down"); }

bool Scpi::isMin() const {
  const QString key = firstParameterKey();
  return key == QLatin1String("min") || key == QLatin1String("minimum");
}

bool Scpi::isMax() const {
  const QString key = firstParameterKey();
  return key == QLatin1String("max") || key == QLatin1String("maximum");
}

bool Scpi::nextBool(bool& value) {
  const QString key = firstParameterKey();
  if (key == QLatin1String("on") || key == QLatin1String("1")) {
    value = true;
  } else if (key == QLatin1String("off") || key == QLatin1String("0")) {
    value = false;
  } else {
    return false;
  }
  consumeParameter();
  return true;
}

bool Scpi::nextDouble(double& value) {
  if (parameters.isEmpty()) return false;
  bool ok = false;
  value = parameters.first().trimmed().toDouble(&ok);  // the C locale, whatever the system's
  // "nan" and "inf" read as numbers, but no setting takes them.
  ok = ok && std::isfinite(value);
  if (ok) consumeParameter();
  return ok;
}

bool Scpi::nextInt(int& value) {
  if (parameters.isEmpty()) return false;
  bool ok = false;
  value = firstParameterKey().toInt(&ok, 10);
  if (ok) consumeParameter();
  return ok;
}

bool Scpi::nextString(QString& value) {
  if (parameters.isEmpty()) return false;
  const QString text = parameters.first().trimmed();
  if (!text.startsWith(QLatin1Char('"')) || !text.endsWith(QLatin1Char('"'))) return false;
  value = text.size() < 2 ? QString() : text.mid(1, text.size() - 2);  // a lone quote is empty
  consumeParameter();
  return true;
}

bool Scpi::nextWord(QString& word, bool lowerCase) {
  if (parameters.isEmpty()) return false;
  word = lowerCase ? parameters.first().toLower() : parameters.first();
  consumeParameter();
  return true;
}

// The number takes one exponent digit and no exponent sign, so "1e9" reads and "1e10" and
// "1.5e-3" don't. Every copy of the number is removed before the unit is looked for.
bool Scpi::nextFrequency(double& hertz) {
  static const QRegularExpression whiteSpace(QStringLiteral("\\s"));
  static const QRegularExpression number(QStringLiteral("[-+]?\\d*\\.?\\d+[e]?\\d?"));
  static const QRegularExpression letters(QStringLiteral("[a-z]+"));
  if (parameters.isEmpty()) return false;
  QString text = parameters.first();
  text = text.remove(whiteSpace).toLower();
  hertz = 0.0;
  const QString digits = number.match(text).captured();
  if (digits.isEmpty()) return false;
  bool ok = false;
  const double value = digits.toDouble(&ok);
  if (!ok) {
    hertz = value;
    return false;
  }
  text.remove(digits);
  double factor = 1.0;
  if (!text.isEmpty()) {
    factor = frequencyFactor(letters.match(text).captured());
    if (factor == 0.0) return false;
  }
  hertz = value * factor;
  consumeParameter();
  return true;
}

bool Scpi::nextTime(double& seconds) {
  if (parameters.isEmpty()) return false;
  if (!parseDuration(firstParameterKey(), 0.0, seconds)) return false;
  consumeParameter();
  return true;
}

// The count is not checked against the text; the copy stops where the parameter ends.
// Bytes are taken from the UTF-8 form, which gives back what the client sent.
bool Scpi::nextBlock(QByteArray& block) {
  if (parameters.isEmpty()) return false;
  const QByteArray text = parameters.first().trimmed().toUtf8();
  if (!text.startsWith('#')) return false;
  const char widthDigit = text.size() > 1 ? text.at(1) : '\0';
  const int width = widthDigit >= '0' && widthDigit <= '9' ? widthDigit - '0' : 0;
  const qint64 count = text.mid(2, width).toLongLong();  // 0 when it is no number
  const int start = 2 + width;
  const qint64 available = qMax(0, text.size() - start);
  block = text.mid(start, int(qBound<qint64>(0, count, available)));
  consumeParameter();
  return true;
}
