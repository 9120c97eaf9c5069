// SPDX-License-Identifier: MIT
// Text files of "I,Q" lines, read whole at open.
#include "arb/csv_file_reader.h"

#include <QFile>

#include <algorithm>
#include <charconv>
#include <cstring>

namespace {

constexpr qint64 blockBytes = qint64{1} << 22;  // read a block at a time: 4 MiB
// No line of two numbers is this long: a file without line feeds is refused at this length
// instead of being gathered whole.
constexpr ptrdiff_t maxLineBytes = 1 << 16;

bool isSpace(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v';
}

enum class Line { Sample, FieldCount, Value };

// One line without its line feed: two floats split by a comma.
Line parseLine(const char* begin, const char* end, Sample& sample) {
  const char* comma = static_cast<const char*>(std::memchr(begin, ',', end - begin));
  if (!comma || std::memchr(comma + 1, ',', end - comma - 1)) return Line::FieldCount;
  float i = 0.0f, q = 0.0f;
  if (!parseCsvFloat(begin, comma, i) || !parseCsvFloat(comma + 1, end, q)) return Line::Value;
  sample = Sample(i, q);
  return Line::Sample;
}

QString lineError(Line line, int64_t number) {
  return QString(line == Line::FieldCount ? "Invalid sample count on line %1"
                                          : "Invalid value on line %1")
      .arg(number);
}

}  // namespace

bool parseCsvFloat(const char* begin, const char* end, float& value) {
  while (begin < end && isSpace(*begin)) ++begin;
  while (end > begin && isSpace(end[-1])) --end;
  if (begin < end && *begin == '+') {  // from_chars takes "-" only
    ++begin;
    if (begin < end && (*begin == '+' || *begin == '-')) return false;
  }
  if (begin == end) return false;
  const std::from_chars_result r = std::from_chars(begin, end, value);
  return r.ec == std::errc() && r.ptr == end;
}

bool CSVFileReader::open(const QString& path) {
  opened = false;
  error.clear();
  samples.clear();
  position = 0;
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return false;
  // Room for lines of 8 bytes: pages that stay untouched cost no memory, and growing a vector
  // of millions of samples would copy it again and again.
  samples.reserve(static_cast<size_t>(std::min<qint64>(file.size() / 8, maxSamples)));
  std::vector<char> buffer;
  size_t held = 0;  // bytes of an unfinished line carried into the next block
  bool atEnd = false;
  while (!atEnd) {
    buffer.resize(held + static_cast<size_t>(blockBytes));
    const qint64 got = file.read(buffer.data() + held, blockBytes);
    if (got < 0) return false;
    atEnd = got == 0;
    const char* p = buffer.data();
    const char* end = p + held + static_cast<size_t>(got);
    while (p < end) {
      const char* feed = static_cast<const char*>(std::memchr(p, '\n', end - p));
      if (!feed && !atEnd) {
        if (end - p > maxLineBytes) {
          error = lineError(Line::FieldCount, sampleCount() + 1);
          return false;
        }
        break;  // the rest of the line comes with the next block
      }
      const char* lineEnd = feed ? feed : end;
      if (static_cast<int64_t>(samples.size()) == maxSamples) {
        opened = true;
        return true;
      }
      Sample sample;
      const Line line = parseLine(p, lineEnd, sample);
      if (line != Line::Sample) {
        error = lineError(line, sampleCount() + 1);
        return false;
      }
      samples.push_back(sample);
      p = feed ? feed + 1 : end;
    }
    held = static_cast<size_t>(end - p);
    std::memmove(buffer.data(), p, held);
  }
  opened = true;
  return true;
}

int64_t CSVFileReader::read(Sample* destination, int count) {
  if (!destination || count < 1) return 0;
  const int64_t n = std::min<int64_t>(count, samplesRemaining());
  std::copy(samples.begin(), samples.begin() + n, destination);
  return n;
}
