// SPDX-License-Identifier: MIT
// SCPI against the running application while it streams CW at 50e6 samples a second: query
// round trip, a paced query load, and a setting to operation complete.
//
// The application runs headless as a child process with a private HOME, port and events log;
// one client connection serves all benchmarks, since the server takes one client at a time.
// Baselines: a loopback echo server in this process for the round trip, the targets (10,000
// queries a second, 150 ms to completion) for the other two.
#include <benchmark/benchmark.h>

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#ifndef KRT40_APP_PATH
#error "KRT40_APP_PATH must name the krt40 executable"
#endif

extern char** environ;

namespace {

using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

double secondsSince(Clock::time_point t) {
  return std::chrono::duration<double>(Clock::now() - t).count();
}

// Nearest-rank percentile, q in [0, 1].
double percentile(std::vector<double> v, double q) {
  if (v.empty()) return NAN;
  std::sort(v.begin(), v.end());
  size_t rank = static_cast<size_t>(std::ceil(q * static_cast<double>(v.size())));
  return v[std::min(v.size() - 1, rank > 0 ? rank - 1 : 0)];
}

int freePort() {
  int fd = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in a{};
  a.sin_family = AF_INET;
  a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t len = sizeof a;
  bind(fd, reinterpret_cast<sockaddr*>(&a), sizeof a);
  getsockname(fd, reinterpret_cast<sockaddr*>(&a), &len);
  close(fd);
  return ntohs(a.sin_port);
}

// A line-oriented client over loopback TCP, without Nagle's delay on our side.
class LineClient {
public:
  ~LineClient() { disconnect(); }

  bool connectTo(int port) {
    disconnect();
    fd = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(static_cast<uint16_t>(port));
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::connect(fd, reinterpret_cast<sockaddr*>(&a), sizeof a) != 0) {
      disconnect();
      return false;
    }
    int one = 1;
    setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    return true;
  }

  void disconnect() {
    if (fd >= 0) close(fd);
    fd = -1;
    buffer.clear();
  }

  bool send(const std::string& line) {
    std::string out = line + "\n";
    return ::send(fd, out.data(), out.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(out.size());
  }

  // Waits at most `timeout` for data; false on timeout or a closed connection.
  bool receive(std::chrono::nanoseconds timeout) {
    timespec ts{static_cast<time_t>(timeout.count() / 1000000000),
                static_cast<long>(timeout.count() % 1000000000)};
    pollfd p{fd, POLLIN, 0};
    if (ppoll(&p, 1, &ts, nullptr) <= 0) return false;
    char chunk[65536];
    ssize_t n = recv(fd, chunk, sizeof chunk, 0);
    if (n <= 0) return false;
    buffer.append(chunk, static_cast<size_t>(n));
    return true;
  }

  // A complete line from what has arrived, without waiting.
  std::optional<std::string> takeLine() {
    size_t end = buffer.find('\n');
    if (end == std::string::npos) return std::nullopt;
    std::string line = buffer.substr(0, end);
    buffer.erase(0, end + 1);
    return line;
  }

  std::optional<std::string> query(const std::string& command, double timeoutSeconds = 2.0) {
    if (!send(command)) return std::nullopt;
    const auto start = Clock::now();
    for (;;) {
      if (auto line = takeLine()) return line;
      const double left = timeoutSeconds - secondsSince(start);
      if (left <= 0 || !receive(std::chrono::nanoseconds(static_cast<long long>(left * 1e9))))
        return std::nullopt;
    }
  }

  int fd = -1;

private:
  std::string buffer;
};

// ---- The application under test ------------------------------------------------------------

struct App {
  fs::path dir;
  fs::path eventsPath;
  int port = 0;
  pid_t pid = -1;
  LineClient client;
  bool ready = false;
  std::string failure;

  bool start();
  void stop();
  bool waitForCompletion(double seconds);
  std::string logTail() const;
} app;

bool App::start() {
  char pattern[] = "/tmp/krt40-bench-e2e-XXXXXX";
  if (!mkdtemp(pattern)) return (failure = "mkdtemp failed"), false;
  dir = pattern;
  eventsPath = dir / "events.jsonl";
  port = freePort();
  const fs::path home = dir / "home";
  fs::create_directories(home / "Documents/Tarnwick/krt40");
  std::ofstream(home / "Documents/Tarnwick/krt40/Preferences.ini")
      << "[Preferences]\nSCPIEnabled=true\nSCPIPort=" << port << "\n";

  std::vector<std::string> env;
  for (char** e = environ; *e; ++e) {
    const std::string v = *e;
    if (v.rfind("KRT40_", 0) == 0 || v.rfind("XDG_", 0) == 0 || v.rfind("HOME=", 0) == 0 ||
        v.rfind("QT_QPA_PLATFORM=", 0) == 0)
      continue;
    env.push_back(v);
  }
  env.push_back("HOME=" + home.string());
  env.push_back("QT_QPA_PLATFORM=offscreen");
  env.push_back("KRT40_SIM_DEVICES=21000001");
  env.push_back("KRT40_SIM_OPEN_MS=100");
  env.push_back("KRT40_SIM_SPEED=1");
  env.push_back("KRT40_SIM_EVENTS=" + eventsPath.string());
  // The version check fails at once on a closed local port instead of waiting on DNS.
  env.push_back("KRT40_VERSION_URL=http://127.0.0.1:" + std::to_string(freePort()) + "/v.txt");
  std::vector<char*> envp;
  for (auto& v : env) envp.push_back(v.data());
  envp.push_back(nullptr);
  const std::string log = (dir / "app.log").string();
  const pid_t parent = getpid();

  pid = fork();
  if (pid == 0) {
    // The child goes with us, however we end.
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(127);
    int out = open(log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    dup2(out, 1);
    dup2(out, 2);
    char* argv[] = {const_cast<char*>(KRT40_APP_PATH), nullptr};
    execve(KRT40_APP_PATH, argv, envp.data());
    _exit(127);
  }
  if (pid < 0) return (failure = "fork failed"), false;

  // The server listens before the device is open; connect, then wait for the open.
  const auto begin = Clock::now();
  bool connected = false;
  while (!connected && secondsSince(begin) < 20) {
    if (waitpid(pid, nullptr, WNOHANG) == pid)
      return (pid = -1, failure = "application exited"), false;
    connected = client.connectTo(port) && client.query("*IDN?", 1.0).has_value();
    if (!connected) std::this_thread::sleep_for(std::chrono::milliseconds(50));
  }
  if (!connected) return (failure = "no SCPI server on port " + std::to_string(port)), false;
  while (client.query(":SYST:DEV:ACT?").value_or("") != "1") {
    if (secondsSince(begin) > 20) return (failure = "device did not open"), false;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  // RF on, no modulation: CW at 50e6 samples a second.
  client.send(":OUTP ON");
  client.send("*OPC");
  if (!waitForCompletion(5)) return (failure = "RF on did not complete"), false;
  if (client.query(":OUTP?").value_or("") != "1") return (failure = "RF is not on"), false;
  return ready = true;
}

// Polls *ESR? until it reads 1; false on time-out or a lost connection.
bool App::waitForCompletion(double seconds) {
  const auto start = Clock::now();
  for (;;) {
    auto reply = client.query("*ESR?");
    if (!reply) return false;
    if (*reply == "1") return true;
    if (secondsSince(start) > seconds) return false;
    std::this_thread::sleep_for(std::chrono::microseconds(200));
  }
}

void App::stop() {
  if (pid > 0) {
    client.send(":SYST:CLOS");
    client.disconnect();
    const auto start = Clock::now();
    while (waitpid(pid, nullptr, WNOHANG) != pid) {
      if (secondsSince(start) > 5) {
        std::fprintf(stderr, "krt40 did not end after :SYST:CLOS; killed\n");
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
        break;
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    pid = -1;
  }
  std::error_code ignored;
  if (!dir.empty() && !std::getenv("KRT40_BENCH_KEEP")) fs::remove_all(dir, ignored);
}

std::string App::logTail() const {
  std::ifstream in(dir / "app.log");
  std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  return text.size() > 2000 ? text.substr(text.size() - 2000) : text;
}

std::streamoff eventsSize() {
  std::ifstream in(app.eventsPath, std::ios::ate);
  return in ? static_cast<std::streamoff>(in.tellg()) : 0;
}

// Underruns and submitted samples in the events log from byte offset `from`.
void countEvents(std::streamoff from, long& underruns, double& samples) {
  std::ifstream in(app.eventsPath);
  in.seekg(from);
  std::string line;
  while (std::getline(in, line)) {
    const bool device = line.find("\"fn\":\"device\"") != std::string::npos ||
                        line.find("\"fn\": \"device\"") != std::string::npos;
    if (device) {
      if (line.find("underrun") != std::string::npos) ++underruns;
    } else if (line.find("krtSubmitIQ") != std::string::npos) {
      const size_t at = line.find("\"count\"");
      if (at != std::string::npos) samples += std::atof(line.c_str() + line.find(':', at) + 1);
    }
  }
}

// Round trips of one command, in microseconds.
std::vector<double> roundTrips(LineClient& client, const std::string& command, int count,
                               int& failures) {
  std::vector<double> us;
  us.reserve(static_cast<size_t>(count));
  for (int i = 0; i < count; ++i) {
    const auto t0 = Clock::now();
    if (!client.query(command)) {
      ++failures;
      continue;
    }
    us.push_back(secondsSince(t0) * 1e6);
  }
  return us;
}

constexpr int roundTripCount = 5000;
constexpr int warmUpCount = 500;  // first trips pay for cold caches and page faults
double echoP50 = NAN, echoP99 = NAN;

// ---- (a) round trip --------------------------------------------------------------------------

// Baseline: the same client against a loopback server that answers each line at once.
void BM_EchoRoundTrip(benchmark::State& state) {
  int listener = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in a{};
  a.sin_family = AF_INET;
  a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t len = sizeof a;
  bind(listener, reinterpret_cast<sockaddr*>(&a), sizeof a);
  getsockname(listener, reinterpret_cast<sockaddr*>(&a), &len);
  listen(listener, 1);
  std::thread server([listener] {
    int fd = accept(listener, nullptr, nullptr);
    int one = 1;
    setsockopt(fd, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
    char chunk[4096];
    ssize_t n;
    while ((n = recv(fd, chunk, sizeof chunk, 0)) > 0)
      for (ssize_t i = 0; i < n; ++i)
        if (chunk[i] == '\n') ::send(fd, "1e+09\n", 6, MSG_NOSIGNAL);
    close(fd);
  });
  LineClient client;
  client.connectTo(ntohs(a.sin_port));
  int failures = 0;
  std::vector<double> us;
  roundTrips(client, ":FREQ?", warmUpCount, failures);
  for (auto _ : state) {
    const auto t0 = Clock::now();
    us = roundTrips(client, ":FREQ?", roundTripCount, failures);
    state.SetIterationTime(secondsSince(t0));
  }
  client.disconnect();
  server.join();
  close(listener);
  echoP50 = percentile(us, 0.5);
  echoP99 = percentile(us, 0.99);
  state.counters["p50_us"] = echoP50;
  state.counters["p99_us"] = echoP99;
}
BENCHMARK(BM_EchoRoundTrip)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

// ":FREQ?" answered by the application's user interface thread while it streams.
void BM_FreqQueryRoundTrip(benchmark::State& state) {
  if (!app.ready) return state.SkipWithError(app.failure.c_str());
  int failures = 0;
  std::vector<double> us;
  roundTrips(app.client, ":FREQ?", warmUpCount, failures);
  for (auto _ : state) {
    const auto t0 = Clock::now();
    us = roundTrips(app.client, ":FREQ?", roundTripCount, failures);
    state.SetIterationTime(secondsSince(t0));
  }
  const double p50 = percentile(us, 0.5), p99 = percentile(us, 0.99);
  state.counters["p50_us"] = p50;
  state.counters["p99_us"] = p99;
  state.counters["p50_vs_echo"] = p50 / echoP50;
  state.counters["p99_vs_echo"] = p99 / echoP99;
  state.counters["lost"] = failures;
  if (failures) state.SkipWithError("queries went unanswered");
}
BENCHMARK(BM_FreqQueryRoundTrip)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

// ---- (b) paced queries while streaming -------------------------------------------------------

// 10,000 ":FREQ?" a second for 3 s, sent on a fixed schedule with at most 64 outstanding; the
// device must not underrun meanwhile.
void BM_QueriesWhileStreaming(benchmark::State& state) {
  if (!app.ready) return state.SkipWithError(app.failure.c_str());
  constexpr double rate = 10000, seconds = 3;
  constexpr int window = 64;
  const auto period = std::chrono::nanoseconds(static_cast<long long>(1e9 / rate));
  const std::string expected = app.client.query(":FREQ?").value_or("?");
  std::vector<Clock::time_point> sentAt;
  std::vector<double> latencyUs;
  long sent = 0, received = 0, wrong = 0;
  int backlog = 0;
  double elapsed = 0, logged = 0;
  long underruns = 0;
  double samples = 0;
  for (auto _ : state) {
    const std::streamoff from = eventsSize();
    sentAt.assign(static_cast<size_t>(rate * seconds) + 1, {});
    latencyUs.reserve(sentAt.size());
    const auto start = Clock::now();
    const auto end =
        start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    auto next = start;
    for (;;) {
      const auto now = Clock::now();
      if (now >= end && received == sent) break;
      if (now >= end + std::chrono::seconds(2)) break;  // replies that never came
      // Missed slots are sent late, not dropped, as long as the window allows.
      while (now >= next && next < end && sent - received < window &&
             sent < static_cast<long>(sentAt.size())) {
        if (!app.client.send(":FREQ?")) break;
        sentAt[static_cast<size_t>(sent++)] = Clock::now();
        next += period;
      }
      backlog = std::max(backlog, static_cast<int>(sent - received));
      const auto wait = (next < end && sent - received < window)
                            ? std::max(next - Clock::now(), Clock::duration::zero())
                            : Clock::duration(std::chrono::milliseconds(1));
      if (app.client.receive(wait)) {
        while (auto line = app.client.takeLine()) {
          if (received >= sent) break;
          latencyUs.push_back(std::chrono::duration<double, std::micro>(
                                  Clock::now() - sentAt[static_cast<size_t>(received)])
                                  .count());
          if (*line != expected) ++wrong;
          ++received;
        }
      }
    }
    elapsed = secondsSince(start);
    state.SetIterationTime(elapsed);
    // Underrun lines are written as they happen; give the device a moment to report.
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    countEvents(from, underruns, samples);
    logged = secondsSince(start);
  }
  state.counters["queries_per_s"] = received / seconds;
  state.counters["rate_vs_target"] = received / seconds / rate;
  state.counters["p50_us"] = percentile(latencyUs, 0.5);
  state.counters["p99_us"] = percentile(latencyUs, 0.99);
  state.counters["max_us"] = percentile(latencyUs, 1.0);
  state.counters["max_outstanding"] = backlog;
  state.counters["underruns"] = static_cast<double>(underruns);
  state.counters["samples_per_s"] = samples / logged;
  state.counters["wrong_replies"] = static_cast<double>(wrong);
  if (received != sent) state.SkipWithError("queries went unanswered");
}
BENCHMARK(BM_QueriesWhileStreaming)->Iterations(1)->UseManualTime()->Unit(benchmark::kSecond);

// ---- (c) a setting to completion -------------------------------------------------------------

// ":FREQ f", "*OPC", then "*ESR?" until 1; f alternates so each setting is a change.
void BM_SettingToCompletion(benchmark::State& state) {
  if (!app.ready) return state.SkipWithError(app.failure.c_str());
  constexpr int settings = 30;
  std::vector<double> ms;
  int immediate = 0, timeouts = 0;
  for (auto _ : state) {
    const auto t0 = Clock::now();
    for (int i = 0; i < settings; ++i) {
      const auto start = Clock::now();
      app.client.send(i % 2 ? ":FREQ 1.1 GHz" : ":FREQ 1.2 GHz");
      app.client.send("*OPC");
      // A first poll that already reads 1 would mean the gate never held the client back.
      if (app.client.query("*ESR?").value_or("") == "1")
        ++immediate;
      else if (!app.waitForCompletion(5))
        ++timeouts;
      ms.push_back(secondsSince(start) * 1e3);
    }
    state.SetIterationTime(secondsSince(t0));
  }
  const double p50 = percentile(ms, 0.5);
  state.counters["p50_ms"] = p50;
  state.counters["p99_ms"] = percentile(ms, 0.99);
  state.counters["p50_vs_150ms"] = p50 / 150.0;
  state.counters["first_poll_complete"] = immediate;
  if (timeouts) state.SkipWithError("a setting did not complete within 5 s");
}
BENCHMARK(BM_SettingToCompletion)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  // The paced load waits about 100 us at a time; the default 50 us timer slack would skew it.
  prctl(PR_SET_TIMERSLACK, 1UL);
  signal(SIGPIPE, SIG_IGN);
  benchmark::Initialize(&argc, argv);
  if (!app.start())
    std::fprintf(stderr, "krt40 not ready: %s\n%s\n", app.failure.c_str(), app.logTail().c_str());
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  app.stop();
  return 0;
}
