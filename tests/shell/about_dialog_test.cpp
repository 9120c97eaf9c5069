// SPDX-License-Identifier: MIT
// About dialog: the versions shown and the three outcomes of the version check.
#include "shell/about_dialog.h"

#include "krt/krt_api.h"
#include "shell/version_server.h"

#include <QLabel>

#include <gtest/gtest.h>

#include <memory>

namespace {

TEST(AboutDialog, ShowsVersionsAndTheCheckOutcome) {
  const struct {
    const char* versionFile;  // nullptr: no server
    const char* status;       // the failure text has a second line of our own
    const char* style;
  } cases[] = {
      {nullptr, "No internet connection. Check for software update\n",
       "QLabel { color: #994400; }"},
      {"1.0.6", "Software Out Of Date", "QLabel { color: red; }"},
      {"1.0.5", "Software Up To Date", "QLabel { color: green; }"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.status);
    std::unique_ptr<VersionServer> server;
    if (c.versionFile) server = std::make_unique<VersionServer>(VersionServer::file(c.versionFile));
    VersionChecker checker;
    ASSERT_TRUE(runCheck(checker, server ? server->url() : closedPortUrl(), server.get()));
    if (!server) checker.isNewVersionAvailable();  // let the failure land before the dialog asks

    AboutDialog dialog(checker);
    EXPECT_EQ(dialog.windowTitle(), "About the KRT40 Software");
    EXPECT_EQ(dialog.softwareVersionLabel()->text(), "1.0.5");
    EXPECT_EQ(dialog.apiVersionLabel()->text(), QString::fromLatin1(krtGetAPIVersion()));
    EXPECT_TRUE(dialog.statusLabel()->text().startsWith(c.status));
    EXPECT_EQ(dialog.statusLabel()->styleSheet(), c.style);
    const QLabel* link = dialog.downloadLabel();
    ASSERT_EQ(link != nullptr, c.style == std::string("QLabel { color: red; }"));
    if (link) {
      EXPECT_TRUE(link->text().contains(">Download The Latest Version</a>"));
      EXPECT_TRUE(link->openExternalLinks());
    }
  }
}

}  // namespace
