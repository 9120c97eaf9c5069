// SPDX-License-Identifier: MIT
// Runs a krt_api scenario in a forked child with its own KRT40_SIM_* environment.
#include "krt_child.h"

#include "krt/krt_api.h"

#include <cerrno>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace krttest {

void ChildReport::line(const std::string& text) {
  std::string t = text + "\n";
  const char* p = t.data();
  size_t left = t.size();
  while (left > 0) {
    const ssize_t n = ::write(fd_, p, left);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return;
    p += n;
    left -= static_cast<size_t>(n);
  }
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

ChildResult runInChild(const std::map<std::string, std::string>& env,
                       const std::function<void(ChildReport&)>& body, double timeoutSeconds) {
  int reportPipe[2], errPipe[2];
  if (::pipe(reportPipe) != 0 || ::pipe(errPipe) != 0) return {};
  const pid_t pid = ::fork();
  if (pid == 0) {
    ::close(reportPipe[0]);
    ::close(errPipe[0]);
    ::dup2(errPipe[1], 2);
    std::vector<std::string> names;
    for (char** e = environ; *e; ++e) {
      const std::string entry(*e);
      if (entry.rfind("KRT40_SIM_", 0) == 0) names.push_back(entry.substr(0, entry.find('=')));
    }
    for (const auto& n : names) ::unsetenv(n.c_str());
    ::setenv("KRT40_SIM_OPEN_MS", "0", 1);
    for (const auto& kv : env) ::setenv(kv.first.c_str(), kv.second.c_str(), 1);
    ChildReport report(reportPipe[1]);
    try {
      body(report);
    } catch (const std::exception& e) {
      report.fail(__FILE__, __LINE__, std::string("exception: ") + e.what());
    }
    std::fflush(stderr);
    ::_exit(report.failures() ? 1 : 0);
  }
  ::close(reportPipe[1]);
  ::close(errPipe[1]);
  ChildResult result;
  std::string reportText;
  const double deadline = monotonicSeconds() + timeoutSeconds;
  bool reportOpen = true, errOpen = true, timedOut = false;
  while (reportOpen || errOpen) {
    const double left = deadline - monotonicSeconds();
    if (left <= 0) {
      timedOut = true;
      ::kill(pid, SIGKILL);
      break;
    }
    pollfd fds[2] = {{reportPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
    if (!reportOpen) fds[0].fd = -1;
    if (!errOpen) fds[1].fd = -1;
    if (::poll(fds, 2, static_cast<int>(left * 1000) + 1) < 0 && errno != EINTR) break;
    char buffer[4096];
    for (int i = 0; i < 2; ++i) {
      if (fds[i].fd < 0 || !(fds[i].revents & (POLLIN | POLLHUP | POLLERR))) continue;
      const ssize_t n = ::read(fds[i].fd, buffer, sizeof buffer);
      if (n <= 0) {
        (i == 0 ? reportOpen : errOpen) = false;
      } else {
        (i == 0 ? reportText : result.stderrText).append(buffer, static_cast<size_t>(n));
      }
    }
  }
  ::close(reportPipe[0]);
  ::close(errPipe[0]);
  int status = 0;
  ::waitpid(pid, &status, 0);
  result.exitCode = (!timedOut && WIFEXITED(status)) ? WEXITSTATUS(status) : -1;
  if (timedOut)
    result.failures.push_back("time-out after " + std::to_string(timeoutSeconds) + " s");
  std::istringstream lines(reportText);
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

double monotonicSeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

int openDefault(ChildReport& report) {
  int handle = -1;
  CHILD_CHECK(report, krtOpenDeviceBySerial(&handle, kSerial) == 0);
  CHILD_CHECK(report, handle >= 0);
  return handle;
}

}  // namespace krttest
