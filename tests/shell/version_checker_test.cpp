// SPDX-License-Identifier: MIT
// Version check: the comparison, the fetch limits and the signal to the user interface.
#include "shell/version_checker.h"

#include "shell/version_server.h"

#include <QCoreApplication>
#include <QDir>
#include <QThread>

#include <gtest/gtest.h>

#include <optional>

namespace {

struct Outcome {
  bool newer, failed;
  int broadcasts;
};

// Runs one check; the signal is counted where the main window would receive it.
Outcome check(const QString& url, VersionServer* server) {
  VersionChecker checker;
  int broadcasts = 0;
  QObject::connect(&checker, &VersionChecker::broadcastNewVersionAvailable, qApp, [&] {
    EXPECT_EQ(QThread::currentThread(), qApp->thread());
    ++broadcasts;
  });
  EXPECT_TRUE(runCheck(checker, url, server));
  const bool newer = checker.isNewVersionAvailable();
  QCoreApplication::processEvents();  // the queued signal was posted before the join
  return {newer, checker.connectionFailed(), broadcasts};
}

bool threadNamed(const QByteArray& name) {
  const QDir tasks("/proc/self/task");
  for (const QString& task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
    QFile comm(tasks.filePath(task + "/comm"));
    if (comm.open(QIODevice::ReadOnly) && comm.readAll().trimmed() == name) return true;
  }
  return false;
}

TEST(VersionChecker, ComparesWithTheRunningVersion) {
  EXPECT_STREQ(softwareVersion(), "1.0.5");
  const struct {
    const char* text;
    std::optional<bool> newer;  // nullopt: not three parts
  } cases[] = {
      {"1.0.5", false},      {"1.0.6", true},           {"1.0.10", true},
      {"1.1.0", true},       {"2.0.0", true},           {"0.9.9", false},
      {"0.0.6", false},      {"1.-1.9", false},   // higher patch, lower major/minor
      {"0.1.0", false},                           // higher minor, lower major
      {"1..0.6", true},      {"1.0.6.", true},    // empty parts are skipped
      {"1.x.6", true},       {"1.0.6\n", false},  // a part that isn't a number counts as 0
      {"1.0", std::nullopt}, {"1.0.5.1", std::nullopt}, {"", std::nullopt},
      {"..", std::nullopt},
  };
  for (const auto& c : cases) {
    VersionNumber version;
    ASSERT_EQ(parseVersionText(c.text, version), c.newer.has_value()) << c.text;
    if (c.newer) {
      EXPECT_EQ(isNewerVersion(version), *c.newer) << c.text;
    }
  }
}

TEST(VersionChecker, FetchesTheVersionFile) {
  const struct {
    QByteArray response;
    Outcome expected;
  } cases[] = {
      {VersionServer::file("1.0.5"), {false, false, 0}},
      {VersionServer::file("1.0.6"), {true, false, 1}},
      {VersionServer::file("0001.0000.0006"), {true, false, 1}},   // 14 bytes, the most taken
      {VersionServer::file("00001.0000.0006"), {false, true, 0}},  // 15 bytes
      {VersionServer::file(""), {false, true, 0}},
      {VersionServer::file("1.0"), {false, true, 0}},     // 3 bytes: too short to count as fetched
      {VersionServer::file("10.20"), {false, false, 0}},  // fitting size, not three parts
      // The text ends at a NUL byte, as in a zero-filled buffer.
      {VersionServer::file(QByteArray("1.0.6\0.1", 8)), {true, false, 1}},
      {"HTTP/1.0 404 Not Found\r\n\r\n1.0.6", {false, true, 0}},
      {"HTTP/1.0 200 OK\r\n1.0.6", {false, true, 0}},  // no end of header
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.response.constData());
    VersionServer server(c.response);
    const Outcome outcome = check(server.url(), &server);
    EXPECT_EQ(outcome.newer, c.expected.newer);
    EXPECT_EQ(outcome.failed, c.expected.failed);
    EXPECT_EQ(outcome.broadcasts, c.expected.broadcasts);
    EXPECT_TRUE(server.request().startsWith("GET /krt40_version.txt HTTP/1."));
    EXPECT_TRUE(server.request().contains("\r\nCache-Control: no-cache\r\n"));
  }
}

// A server that never answers ends the fetch at the 5-second receive limit. (A refused
// connection is one of the About dialog's cases.)
TEST(VersionChecker, SilentServerFails) {
  QTcpServer silent;
  silent.listen(QHostAddress::LocalHost);
  VersionChecker checker;
  runCheck(checker, VersionServer::urlAt(silent.serverPort()), nullptr);
  // Named for debuggers, cut to the 15 characters Linux allows.
  EXPECT_TRUE(QTest::qWaitFor([] { return threadNamed("KRT40 Get Versi"); }));
  EXPECT_FALSE(checker.isNewVersionAvailable());
  EXPECT_TRUE(checker.connectionFailed());
}

TEST(VersionChecker, ChecksOnceARun) {
  VersionServer server(VersionServer::file("1.0.6"));
  VersionChecker checker;
  ASSERT_TRUE(runCheck(checker, server.url(), &server));
  ASSERT_TRUE(checker.isNewVersionAvailable());
  runCheck(checker, closedPortUrl(), nullptr);  // ignored
  EXPECT_TRUE(checker.isNewVersionAvailable());
  EXPECT_FALSE(checker.connectionFailed());
}

}  // namespace
