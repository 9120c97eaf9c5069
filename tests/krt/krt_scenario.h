// SPDX-License-Identifier: MIT
// Helpers of the simulator tests: the environment of a scenario, its files, recordings.
#pragma once

// The library reads its KRT40_SIM_* configuration once per process, at its first call. CTest
// runs every test, and every row of a parameterised one, in a process of its own, so a test
// sets its variables with useEnvironment() before it calls the library.

#include "krt/krt_api.h"
#include "support/events_log.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

extern char** environ;

namespace krttest {

using Json = nlohmann::json;

// The serial number of the default simulated device.
constexpr int kSerial = 21000001;

// A folder of this process under /tmp for recordings and logs, removed at exit.
inline std::string scratch(const std::string& name) {
  static const struct Dir {
    std::string path;
    Dir() {
      char pattern[] = "/tmp/krt_test_XXXXXX";
      path = ::mkdtemp(pattern);
    }
    ~Dir() { std::filesystem::remove_all(path); }
  } dir;
  return dir.path + "/" + name;
}

// Replaces every KRT40_SIM_* variable with `env` (OPEN_MS 0 unless given). False when called a
// second time in this process: the test binary ran without CTest, and the first test's
// configuration is the one in force.
inline bool useEnvironment(const std::map<std::string, std::string>& env) {
  static bool used = false;
  if (used) return false;
  used = true;
  std::vector<std::string> names;
  for (char** e = environ; *e; ++e) {
    const std::string entry(*e);
    if (entry.rfind("KRT40_SIM_", 0) == 0) names.push_back(entry.substr(0, entry.find('=')));
  }
  for (const std::string& n : names) ::unsetenv(n.c_str());
  ::setenv("KRT40_SIM_OPEN_MS", "0", 1);
  for (const auto& [name, value] : env) ::setenv(name.c_str(), value.c_str(), 1);
  return true;
}

inline int openDefault() {
  int handle = -1;
  EXPECT_EQ(krtOpenDeviceBySerial(&handle, kSerial), 0);
  return handle;
}

inline std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

inline Json readMeta(const std::string& prefix) {
  return Json::parse(readFile(prefix + ".sigmf-meta"));
}

// The capture segment in force at sample position (the last one starting at or before it).
inline Json captureAt(const Json& meta, long long position) {
  Json found;
  for (const Json& c : meta.at("captures"))
    if (c.at("core:sample_start").get<long long>() <= position) found = c;
  return found;
}

// Annotations with this label, in file order.
inline std::vector<Json> annotations(const Json& meta, const std::string& label) {
  std::vector<Json> out;
  for (const Json& a : meta.at("annotations"))
    if (a.at("core:label") == label) out.push_back(a);
  return out;
}

// Device events of the log with this name ("underrun", "abort", "flushed", ...).
inline std::vector<Json> deviceEvents(const EventsLog& log, const std::string& name) {
  std::vector<Json> out;
  for (const Json& e : log.calls("device"))
    if (e.at("args").at("event") == name) out.push_back(e);
  return out;
}

inline double monotonicSeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

inline void sleepSeconds(double s) {
  std::this_thread::sleep_for(std::chrono::duration<double>(s));
}

}  // namespace krttest
