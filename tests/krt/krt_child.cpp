// SPDX-License-Identifier: MIT
// Runs a krt_api scenario in a forked child with its own KRT40_SIM_* environment.
#include "krt_child.h"

#include "krt/krt_api.h"

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace krttest {

void ChildReport::line(const std::string& text) {
  const std::string t = text + "\n";
  if (::write(fd_, t.data(), t.size()) != static_cast<ssize_t>(t.size())) ++failures_;
}

void ChildReport::value(const std::string& key, double v) {
  std::ostringstream s;
  s.precision(17);
  s << "V " << key << " " << v;
  line(s.str());
}

void ChildReport::fail(const char* file, int line_, const std::string& what) {
  ++failures_;
  line("F " + std::string(std::filesystem::path(file).filename()) + ":" + std::to_string(line_) +
       ": " + what);
}

double ChildResult::at(const std::string& key) const {
  const auto it = values.find(key);
  return it == values.end() ? std::nan("") : it->second;
}

std::string ChildResult::describe() const {
  std::string s = "child exit code " + std::to_string(exitCode) + "\n";
  for (const auto& f : failures) s += "  failed: " + f + "\n";
  if (!stderrText.empty()) s += "  stderr: " + stderrText;
  return s;
}

// The child writes its report and standard error to files of a private folder; an alarm ends
// it at the time-out.
ChildResult runInChild(const std::map<std::string, std::string>& env,
                       const std::function<void(ChildReport&)>& body, double timeoutSeconds) {
  TempDir dir;
  const std::string reportPath = dir.path("report"), errPath = dir.path("stderr");
  const pid_t pid = ::fork();
  if (pid == 0) {
    std::vector<std::string> names;
    for (char** e = environ; *e; ++e) {
      const std::string entry(*e);
      if (entry.rfind("KRT40_SIM_", 0) == 0) names.push_back(entry.substr(0, entry.find('=')));
    }
    for (const auto& n : names) ::unsetenv(n.c_str());
    ::setenv("KRT40_SIM_OPEN_MS", "0", 1);
    for (const auto& kv : env) ::setenv(kv.first.c_str(), kv.second.c_str(), 1);
    if (!std::freopen(errPath.c_str(), "w", stderr)) ::_exit(3);
    ChildReport report(::creat(reportPath.c_str(), 0600));
    ::alarm(static_cast<unsigned>(std::ceil(timeoutSeconds)));
    try {
      body(report);
    } catch (const std::exception& e) {
      report.fail(__FILE__, __LINE__, std::string("exception: ") + e.what());
    }
    std::fflush(stderr);
    ::_exit(report.failures() ? 1 : 0);
  }
  int status = 0;
  ::waitpid(pid, &status, 0);
  ChildResult result;
  result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  if (WIFSIGNALED(status))
    result.failures.push_back("ended by signal " + std::to_string(WTERMSIG(status)) +
                              " (14: time-out after " + std::to_string(timeoutSeconds) + " s)");
  result.stderrText = readFile(errPath);
  std::istringstream lines(readFile(reportPath));
  std::string l;
  while (std::getline(lines, l)) {
    if (l.rfind("F ", 0) == 0) {
      result.failures.push_back(l.substr(2));
    } else if (l.rfind("V ", 0) == 0) {
      std::istringstream fields(l.substr(2));
      std::string key;
      double v = 0;
      fields >> key >> v;
      result.values[key] = v;
    }
  }
  return result;
}

TempDir::TempDir() {
  char pattern[] = "/tmp/krt_test_XXXXXX";
  const char* d = ::mkdtemp(pattern);
  dir_ = d ? d : "/tmp";
}

TempDir::~TempDir() {
  std::error_code ec;
  if (dir_ != "/tmp") std::filesystem::remove_all(dir_, ec);
}

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

std::vector<Json> readJsonLines(const std::string& path) {
  std::vector<Json> out;
  std::istringstream lines(readFile(path));
  std::string l;
  while (std::getline(lines, l)) out.push_back(Json::parse(l));
  return out;
}

Json readJson(const std::string& path) {
  const std::string text = readFile(path);
  return text.empty() ? Json() : Json::parse(text);
}

Json captureAt(const Json& meta, long long position) {
  Json found;
  for (const Json& c : meta.at("captures")) {
    if (c.at("core:sample_start").get<long long>() <= position) found = c;
  }
  return found;
}

std::vector<Json> annotations(const Json& meta, const std::string& label) {
  std::vector<Json> out;
  for (const Json& a : meta.at("annotations")) {
    if (a.at("core:label") == label) out.push_back(a);
  }
  return out;
}

int deviceEvents(const std::vector<Json>& events, const std::string& name) {
  int n = 0;
  for (const Json& e : events) n += e.at("fn") == "device" && e.at("args").at("event") == name;
  return n;
}

double monotonicSeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void sleepSeconds(double s) { std::this_thread::sleep_for(std::chrono::duration<double>(s)); }

int openDefault(ChildReport& report) {
  int handle = -1;
  CHILD_CHECK(report, krtOpenDeviceBySerial(&handle, kSerial) == 0);
  CHILD_CHECK(report, handle >= 0);
  return handle;
}

}  // namespace krttest
