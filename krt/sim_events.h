// SPDX-License-Identifier: MIT
// The JSON Lines log of library calls and device events (KRT40_SIM_EVENTS).
#pragma once

#include <mutex>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

namespace krtsim {

using Json = nlohmann::ordered_json;

// One JSON object a line, written with one write() when the call returns, so lines are whole,
// in the order of the calls' returns, and on disk at once:
//   {"t": 1.234567, "fn": "krtSetFrequency", "handle": 0, "args": {"frequency": 1e9}, "ret": 0}
// "t" is seconds since the library was loaded, at the time the line is written. "args" holds
// the values the call received, by the header's argument names (krtSubmitIQ: the count only);
// "out" holds what the call wrote through pointer arguments. Calls without a handle have no
// "handle" key. Non-finite numbers appear as null. Player lines have "fn": "device" and
// "args": {"event": ..., ...} and no "ret".
class EventLog {
public:
  explicit EventLog(const std::string& path);  // empty path: disabled
  EventLog(const EventLog&) = delete;
  EventLog& operator=(const EventLog&) = delete;

  // Cheap; build the arguments only when this is true.
  bool enabled() const { return fd_ >= 0; }

  void call(const char* fn, std::optional<int> handle, Json args, Json ret, Json out = Json());
  void device(int handle, Json args);

private:
  void writeLine(Json& line);

  int fd_ = -1;
  std::mutex mutex_;
};

}  // namespace krtsim
