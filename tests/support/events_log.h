// SPDX-License-Identifier: MIT
// Reads the simulated device's events log (JSON Lines) for tests.
#pragma once

#include <nlohmann/json.hpp>

#include <fstream>
#include <string>
#include <vector>

// Follows an events log from the position it had when made, so that each test sees only the
// calls it caused even when several tests share one log.
class EventsLog {
public:
  explicit EventsLog(std::string path) : path(std::move(path)) { start = size(); }

  // Every event since construction (or since the last mark()).
  std::vector<nlohmann::json> events() const {
    std::vector<nlohmann::json> out;
    scan({}, [&](nlohmann::json& event) {
      out.push_back(std::move(event));
      return true;
    });
    return out;
  }

  // Events of one library function, in call order.
  std::vector<nlohmann::json> calls(const std::string& fn) const {
    std::vector<nlohmann::json> out;
    scan({fn}, [&](nlohmann::json& event) {
      out.push_back(std::move(event));
      return true;
    });
    return out;
  }

  // Names of the calls in order, leaving out those in `skip`.
  std::vector<std::string> sequence(const std::vector<std::string>& skip = {}) const {
    std::vector<std::string> out;
    for (auto& e : events()) {
      std::string fn = e.value("fn", "");
      bool skipped = false;
      for (auto& s : skip) skipped = skipped || s == fn;
      if (!skipped) out.push_back(fn);
    }
    return out;
  }

  // Calls `visit` with each event since the mark whose "fn" is one of `fns` (any, when empty),
  // in order, until it returns false. Lines of other calls are skipped unparsed: a generator
  // that retunes every few samples logs tens of megabytes a second, faster than lines parse.
  template <class Visit>
  void scan(const std::vector<std::string>& fns, Visit visit) const {
    std::vector<std::string> needles;
    for (const std::string& fn : fns) needles.push_back("\"fn\":\"" + fn + "\"");
    std::ifstream in(path);
    in.seekg(static_cast<std::streamoff>(start));
    std::string line;
    while (std::getline(in, line)) {
      bool wanted = needles.empty();
      for (const std::string& needle : needles) wanted = wanted || line.find(needle) != line.npos;
      if (!wanted) continue;
      auto event = nlohmann::json::parse(line, nullptr, false);
      if (!event.is_discarded() && !visit(event)) return;
    }
  }

  void mark() { start = size(); }

private:
  size_t size() const {
    std::ifstream in(path, std::ios::ate);
    return in ? static_cast<size_t>(in.tellg()) : 0;
  }

  std::string path;
  size_t start = 0;
};
