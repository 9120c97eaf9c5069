// SPDX-License-Identifier: MIT
// The error queue and its window: codes, overflow, reading and clearing.
#include "shell/error_log.h"
#include "shell/error_queue.h"

#include <QCoreApplication>
#include <QTest>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

class ErrorLogTest : public ::testing::Test {
protected:
  void SetUp() override { errorLogClear(); }
  void TearDown() override { errorLogClear(); }
};

TEST_F(ErrorLogTest, ReplyTextCarriesCodeAndItsFixedText) {
  const std::vector<std::pair<int, QString>> codes = {
      {0, "No error"},           {-1, "Setting clamped"},
      {-2, "Invalid parameter"}, {-3, "Too few parameters"},
      {-4, "Undefined header"},  {-5, "Unsupported"},
      {-6, "Invalid operation"}, {-100, "Unable to save file"},
      {-7, "Unknown error"},     {42, "Unknown error"}};
  for (const auto& [code, text] : codes) errorLogPut(code, "detail");
  for (const auto& [code, text] : codes)
    EXPECT_EQ(errorLogNext(), QString("%1,%2;detail").arg(code).arg(text));
  EXPECT_EQ(errorLogCount(), 0);
  EXPECT_EQ(errorLogNext(), "0,No Error;");
  EXPECT_EQ(errorLogNext(), "0,No Error;");
}

TEST_F(ErrorLogTest, AFullQueueKeepsItsOldestAndReplacesItsNewest) {
  for (int i = 1; i <= 103; ++i) errorLogPut(-2, QString::number(i));
  EXPECT_EQ(errorLogCount(), 100);
  for (int i = 1; i <= 99; ++i)
    ASSERT_EQ(errorLogNext(), QString("-2,Invalid parameter;%1").arg(i));
  EXPECT_EQ(errorLogNext(), "-2,Invalid parameter;103");
  EXPECT_EQ(errorLogCount(), 0);
}

TEST_F(ErrorLogTest, PutsFromManyThreadsAreAllCounted) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t)
    threads.emplace_back([] {
      for (int i = 0; i < 20; ++i) errorLogPut(-1, "clamped");
    });
  for (auto& t : threads) t.join();
  EXPECT_EQ(errorLogCount(), 80);
}

TEST_F(ErrorLogTest, WindowShowsTheQueue) {
  ErrorLog window;
  EXPECT_EQ(window.windowTitle(), "Error Info");
  EXPECT_EQ(window.text(), "No Errors");
  errorLogPut(-1, "Center frequency clamped");
  std::thread([] { errorLogPut(-7, "from a worker"); }).join();
  ASSERT_TRUE(QTest::qWaitFor([&] { return window.text().contains("from a worker"); }, 2000));
  const QString text = window.text();
  EXPECT_TRUE(text.contains("-1,  Setting clamped,  Center frequency clamped\n\n"));
  EXPECT_TRUE(text.contains("-7,  Unknown error,  from a worker\n\n"));
  // Reading through the remote interface doesn't redraw: the taken entry stays shown.
  errorLogNext();
  EXPECT_TRUE(window.text().contains("Center frequency clamped"));
  window.clearList();
  EXPECT_EQ(window.text(), "No Errors");
  window.clearList();
  EXPECT_EQ(window.text(), "No Errors");
}

}  // namespace
