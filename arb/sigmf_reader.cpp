// SPDX-License-Identifier: MIT
// SigMF recordings: a JSON ".sigmf-meta" beside the samples in ".sigmf-data".
#include "arb/sigmf_reader.h"

#include "arb/binary_file_16sc.h"
#include "arb/binary_file_32fc.h"

#include <QFile>

#include <nlohmann/json.hpp>

#include <cmath>

namespace {

const QString metaSuffix = QStringLiteral(".sigmf-meta");
const QString dataSuffix = QStringLiteral(".sigmf-data");

// The recording's name without the suffix of whichever file of the pair was chosen.
QString baseName(const QString& path) {
  for (const QString& suffix : {metaSuffix, dataSuffix})
    if (path.endsWith(suffix)) return path.left(path.size() - suffix.size());
  return path;
}

std::unique_ptr<IQFileReader> readerFor(const QString& datatype) {
  if (datatype == QLatin1String("cf32_le")) return std::make_unique<BinaryFile32fc>();
  if (datatype == QLatin1String("ci16_le")) return std::make_unique<BinaryFile16sc>();
  return nullptr;
}

}  // namespace

SigMFReader::SigMFReader() = default;
SigMFReader::~SigMFReader() = default;

bool SigMFReader::fail(const QString& text) {
  error = text;
  samples.reset();
  return false;
}

bool SigMFReader::open(const QString& path) {
  samples.reset();
  error.clear();
  type.clear();
  rate = 0.0;
  const QString base = baseName(path);
  if (!readMeta(base + metaSuffix)) return false;
  samples = readerFor(type);
  if (!samples->open(base + dataSuffix))
    return fail(QStringLiteral("SigMF data: unable to open file"));
  return true;
}

// Parsed without exceptions: a malformed meta is a value to report, not a throw.
bool SigMFReader::readMeta(const QString& metaPath) {
  QFile file(metaPath);
  if (!file.open(QIODevice::ReadOnly))
    return fail(QStringLiteral("SigMF meta: unable to open file"));
  const QByteArray text = file.readAll();
  const auto meta =
      nlohmann::json::parse(text.constData(), text.constData() + text.size(), nullptr, false);
  if (meta.is_discarded()) return fail(QStringLiteral("SigMF meta: not valid JSON"));
  if (!meta.is_object() || !meta.contains("global") || !meta["global"].is_object())
    return fail(QStringLiteral("SigMF meta: missing key global"));
  const auto& global = meta["global"];
  const auto datatype = global.find("core:datatype");
  if (datatype == global.end())
    return fail(QStringLiteral("SigMF meta: missing key global/core:datatype"));
  if (!datatype->is_string())
    return fail(QStringLiteral("SigMF meta: invalid key global/core:datatype"));
  type = QString::fromStdString(datatype->get<std::string>());
  if (!readerFor(type))
    return fail(QStringLiteral("SigMF meta: unsupported datatype %1").arg(type));
  const auto channels = global.find("core:num_channels");
  if (channels != global.end() && !(channels->is_number_unsigned() && *channels == 1))
    return fail(QStringLiteral("SigMF meta: unsupported key global/core:num_channels"));
  const auto sampleRate = global.find("core:sample_rate");
  if (sampleRate != global.end()) {
    if (!sampleRate->is_number() || !(sampleRate->get<double>() > 0.0) ||
        !std::isfinite(sampleRate->get<double>()))
      return fail(QStringLiteral("SigMF meta: invalid key global/core:sample_rate"));
    rate = sampleRate->get<double>();
  }
  return true;
}

bool SigMFReader::isOpen() const { return samples && samples->isOpen(); }
int64_t SigMFReader::sampleCount() const { return samples ? samples->sampleCount() : 0; }
bool SigMFReader::rewind() { return samples && samples->rewind(); }
int64_t SigMFReader::samplesRemaining() const { return samples ? samples->samplesRemaining() : 0; }

int64_t SigMFReader::read(Sample* destination, int count) {
  return samples ? samples->read(destination, count) : 0;
}
