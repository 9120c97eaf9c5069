// SPDX-License-Identifier: MIT
// The simulator's configuration, read from KRT40_SIM_* environment variables once.
#include "krt/sim_config.h"

#include <cerrno>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <iostream>

namespace krtsim {

namespace {

std::string trim(const std::string& s) {
  const auto first = s.find_first_not_of(" \t\r\n");
  if (first == std::string::npos) return {};
  const auto last = s.find_last_not_of(" \t\r\n");
  return s.substr(first, last - first + 1);
}

// A finite decimal number that takes the whole text (surrounding blanks allowed).
bool parseNumber(const std::string& text, double& value) {
  const std::string t = trim(text);
  if (t.empty()) return false;
  errno = 0;
  char* end = nullptr;
  const double v = std::strtod(t.c_str(), &end);
  if (end != t.c_str() + t.size() || errno == ERANGE || !std::isfinite(v)) return false;
  value = v;
  return true;
}

// A comma-separated list of positive int serial numbers; an empty text is an empty list.
bool parseSerials(const std::string& text, std::vector<int>& serials) {
  std::vector<int> out;
  if (trim(text).empty()) {
    serials.clear();
    return true;
  }
  size_t start = 0;
  while (true) {
    const size_t comma = text.find(',', start);
    const std::string item =
        trim(text.substr(start, comma == std::string::npos ? std::string::npos : comma - start));
    double v = 0;
    if (!parseNumber(item, v) || v != std::floor(v) || v < 1 || v > INT_MAX) return false;
    if (item.find_first_not_of("0123456789") != std::string::npos) return false;
    out.push_back(static_cast<int>(v));
    if (comma == std::string::npos) break;
    start = comma + 1;
  }
  serials = out;
  return true;
}

class Reader {
public:
  Reader(const std::function<const char*(const char*)>& lookup, std::ostream& err)
      : lookup_(lookup), err_(err) {}

  // The raw value; nullopt when unset (or empty, unless emptyIsValue).
  std::optional<std::string> raw(const char* name, bool emptyIsValue = false) const {
    const char* v = lookup_(name);
    if (!v || (!emptyIsValue && trim(v).empty())) return std::nullopt;
    return std::string(v);
  }

  // Sets value from the variable if it parses and lies in [lo, hi] (integral if asked).
  template <typename T>
  void number(const char* name, T& value, double lo, double hi, bool integral,
              const char* defaultText) {
    const auto text = raw(name);
    if (!text) return;
    double v = 0;
    if (parseNumber(*text, v) && v >= lo && v <= hi && (!integral || v == std::floor(v))) {
      value = static_cast<T>(v);
      return;
    }
    malformed(name, *text, defaultText);
  }

  void optionalNumber(const char* name, std::optional<double>& value, double lo, double hi) {
    const auto text = raw(name);
    if (!text) return;
    double v = 0;
    if (parseNumber(*text, v) && v >= lo && v <= hi) {
      value = v;
      return;
    }
    malformed(name, *text, "unset");
  }

  void malformed(const char* name, const std::string& text, const char* defaultText) const {
    err_ << "krt_api: ignoring malformed " << name << "='" << text << "', using the default ("
         << defaultText << ")" << std::endl;
  }

private:
  const std::function<const char*(const char*)>& lookup_;
  std::ostream& err_;
};

}  // namespace

SimConfig parseConfig(const std::function<const char*(const char*)>& lookup, std::ostream& err) {
  SimConfig c;
  Reader r(lookup, err);
  if (const auto text = r.raw("KRT40_SIM_DEVICES", true)) {
    if (!parseSerials(*text, c.devices)) r.malformed("KRT40_SIM_DEVICES", *text, "21000001");
  }
  r.number("KRT40_SIM_OPEN_MS", c.openMs, 0, 3.6e6, false, "1200");
  r.number("KRT40_SIM_SPEED", c.speed, 0, 1000, false, "1");
  r.number("KRT40_SIM_QUEUE_MS", c.queueMs, 1e-3, 3.6e6, false, "100");
  if (const auto text = r.raw("KRT40_SIM_RECORD")) c.recordPrefix = *text;
  r.number("KRT40_SIM_RECORD_MAX", c.recordMax, 0, 9.0e15, true, "20000000");
  if (const auto text = r.raw("KRT40_SIM_EVENTS")) c.eventsPath = *text;
  if (const auto text = r.raw("KRT40_SIM_UNPLUG_FILE")) c.unplugFile = *text;
  r.optionalNumber("KRT40_SIM_FAIL_AFTER_MS", c.failAfterMs, 0, 1e12);
  r.optionalNumber("KRT40_SIM_TEMPERATURE", c.temperatureC, -100, 200);
  return c;
}

const SimConfig& config() {
  static const SimConfig c =
      parseConfig([](const char* name) { return std::getenv(name); }, std::cerr);
  return c;
}

}  // namespace krtsim
