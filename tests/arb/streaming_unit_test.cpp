// SPDX-License-Identifier: MIT
// The streaming unit in the panel: the file list and its labels, blocks of 40 ms from file to
// file with no gap, the list's order, and the "Streaming" preset group.
#include "arb/streaming/mode_view_streaming.h"
#include "modes/unit_panel_test.h"
#include "support/warnings.h"

#include <QCheckBox>
#include <QFile>
#include <QLabel>
#include <QListWidget>

#include <gtest/gtest.h>

namespace {

class StreamingUnitTest : public UnitPanelTest<ModeViewStreaming> {
protected:
  // A raw 16-bit file of `samples` zeros.
  QString rawFile(const char* name, int samples) {
    QFile file(dir.filePath(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(QByteArray(4 * samples, '\0')));
    return file.fileName();
  }
  QString label(const QString& text) {
    for (QLabel* l : view->findChildren<QLabel*>())
      if (l->text() == text) return text;
    return {};
  }
  QListWidget* fileList() { return view->findChild<QListWidget*>(); }
  Calls submits() {
    Calls calls = played({"krtSubmitIQ"});
    calls.resize(std::min<size_t>(calls.size(), 11));
    return calls;
  }
};

TEST_F(StreamingUnitTest, BlocksRunFromFileToFileInTheListsOrder) {
  Warnings warnings;
  view->addFiles(2, {rawFile("a.bin", 3000), rawFile("b.bin", 500), dir.filePath("gone.bin"),
                     rawFile("c.bin", 1234)});
  EXPECT_EQ(warnings.shown, QStringList("Error Encountered: Unable to open " +
                                        dir.filePath("gone.bin") + ". Skipping."));
  EXPECT_EQ(label("3 files loaded"), "3 files loaded");
  EXPECT_EQ(label("4,734"), "4,734");
  client.command(":FREQ 1 GHz");
  view->setSampleRate(12500);  // blocks of 500 samples
  connectAndEnable();
  log.mark();
  view->enabledCheck()->click();
  const auto block = [](double n) { return Call{"krtSubmitIQ", n}; };
  ASSERT_TRUE(waitUntil([&] { return played({"krtSubmitIQ"}).size() >= 11; }));
  EXPECT_EQ(submits(),
            (Calls{block(500), block(500), block(500), block(500), block(500), block(500),
                   block(500), block(500), block(500), block(234), block(500)}))
      << "a's six blocks, b's one, c's three with a short tail, a again";

  // The last row dragged to the top plays first at the next start.
  log.mark();
  fileList()->model()->moveRow(QModelIndex(), 2, QModelIndex(), 0);
  ASSERT_TRUE(waitUntil([&] { return played({"krtSubmitIQ"}).size() >= 4; }));
  EXPECT_EQ(played({"krtSubmitIQ"})[2], block(234));
}

// A SigMF recording plays like the raw files, and the first one brings its rate.
TEST_F(StreamingUnitTest, SigmfRecordingsBringTheirRate) {
  rawFile("r.sigmf-data", 700);
  QFile meta(dir.filePath("r.sigmf-meta"));
  ASSERT_TRUE(meta.open(QIODevice::WriteOnly));
  meta.write(R"({"global": {"core:datatype": "ci16_le", "core:sample_rate": 25000,
                 "core:version": "1.0.0"}, "captures": [], "annotations": []})");
  meta.close();
  view->addFiles(9, {meta.fileName()});
  EXPECT_EQ(view->sampleRate(), 25000.0);
  ASSERT_EQ(view->getFileList().size(), 1u);
  EXPECT_EQ(view->getFileList()[0].sampleCount, 700);
}

TEST_F(StreamingUnitTest, ClampsAndPresetGroup) {
  view->setSampleRate(1e9);
  view->setIQScale(0.0);
  EXPECT_EQ(client.query(":SYST:ERR?;:SYST:ERR?"),
            "-1,Setting clamped;Streaming sample rate clamped;"
            "-1,Setting clamped;Streaming I/Q scale clamped");
  EXPECT_EQ(savedGroup("Streaming"), "IQScale=0.001|SampleRate=5.4e+07");
  loadText("[Streaming]\nIQScale=50\nSampleRate=1e6\n");
  EXPECT_EQ(savedGroup("Streaming"), "IQScale=50|SampleRate=1e+06");
}

}  // namespace
