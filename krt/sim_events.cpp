// SPDX-License-Identifier: MIT
// The JSON Lines log of library calls and device events (KRT40_SIM_EVENTS).
#include "krt/sim_events.h"

#include <cerrno>
#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <iostream>
#include <unistd.h>

#include "krt/sim_clock.h"

namespace krtsim {

EventLog::EventLog(const std::string& path) {
  if (path.empty()) return;
  fd_ = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0644);
  if (fd_ < 0) {
    std::cerr << "krt_api: cannot write the events log " << path << ": " << std::strerror(errno)
              << std::endl;
  }
}

void EventLog::call(const char* fn, std::optional<int> handle, Json args, Json ret, Json out) {
  if (!enabled()) return;
  Json line;
  line["t"] = 0.0;  // placeholder keeps "t" first; set under the lock
  line["fn"] = fn;
  if (handle) line["handle"] = *handle;
  line["args"] = args.is_null() ? Json::object() : std::move(args);
  line["ret"] = std::move(ret);
  if (!out.is_null()) line["out"] = std::move(out);
  writeLine(line);
}

void EventLog::device(int handle, Json args) {
  if (!enabled()) return;
  Json line;
  line["t"] = 0.0;
  line["fn"] = "device";
  line["handle"] = handle;
  line["args"] = std::move(args);
  writeLine(line);
}

void EventLog::writeLine(Json& line) {
  std::lock_guard<std::mutex> lock(mutex_);
  line["t"] = std::round(nowSeconds() * 1e6) / 1e6;
  std::string text = line.dump(-1, ' ', false, Json::error_handler_t::replace);
  text += '\n';
  const char* p = text.data();
  size_t left = text.size();
  while (left > 0) {
    const ssize_t n = ::write(fd_, p, left);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return;  // a full disk loses log lines, never the caller's call
    p += n;
    left -= static_cast<size_t>(n);
  }
}

}  // namespace krtsim
