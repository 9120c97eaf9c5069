// SPDX-License-Identifier: MIT
// Runs a krt_api scenario in a forked child with its own KRT40_SIM_* environment.
#pragma once

// The library reads its configuration once per process, so every scenario that calls krt_api
// runs in a child forked from the (single-threaded) test process, which itself never calls
// the library. The child reports values and failed checks through a file; its standard error
// is captured too. Files it leaves (recordings, events logs) are checked by the parent.

#include <functional>
#include <map>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace krttest {

using Json = nlohmann::json;

class ChildReport {
public:
  explicit ChildReport(int fd) : fd_(fd) {}
  void value(const std::string& key, double v);
  void fail(const char* file, int line, const std::string& what);
  int failures() const { return failures_; }

private:
  void line(const std::string& text);
  int fd_;
  int failures_ = 0;
};

// A check inside a child; a failure is reported to the parent's test.
#define CHILD_CHECK(report, cond) ((cond) ? (void)0 : (report).fail(__FILE__, __LINE__, #cond))

struct ChildResult {
  int exitCode = -1;                  // -1: ended by a signal or the time-out
  std::vector<std::string> failures;  // "file:line: expression" of failed CHILD_CHECKs
  std::map<std::string, double> values;
  std::string stderrText;

  double at(const std::string& key) const;  // NaN if the child did not report it
  std::string describe() const;             // for assertion messages
};

// The serial number of the default simulated device.
constexpr int kSerial = 21000001;

// Opens the default device inside a child; a failure is reported as a failed check.
int openDefault(ChildReport& report);

// env: the KRT40_SIM_* variables of the child (all others of that prefix are unset; OPEN_MS
// defaults to 0 here unless given).
ChildResult runInChild(const std::map<std::string, std::string>& env,
                       const std::function<void(ChildReport&)>& body, double timeoutSeconds = 30);

// A fresh directory under /tmp, removed with its contents at destruction.
class TempDir {
public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;
  std::string path(const std::string& name) const { return dir_ + "/" + name; }

private:
  std::string dir_;
};

std::string readFile(const std::string& path);
std::vector<Json> readJsonLines(const std::string& path);
Json readJson(const std::string& path);
// The capture segment in force at sample position (the last one starting at or before it).
Json captureAt(const Json& meta, long long position);
// Annotations with this label, in file order.
std::vector<Json> annotations(const Json& meta, const std::string& label);
// Device lines of an events log with this event name ("underrun", "abort", "flushed", ...).
int deviceEvents(const std::vector<Json>& events, const std::string& name);
// Seconds of the monotonic clock.
double monotonicSeconds();
void sleepSeconds(double s);

}  // namespace krttest
