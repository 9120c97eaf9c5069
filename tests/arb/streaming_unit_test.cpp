// SPDX-License-Identifier: MIT
// The streaming unit in the panel: the file list and its labels, blocks of 40 ms from file to
// file with no gap, the list's order, and the "Streaming" preset group.
#include "arb/streaming/mode_view_streaming.h"
#include "modes/unit_panel_test.h"
#include "support/warnings.h"

#include <QCheckBox>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QListWidget>

#include <gtest/gtest.h>

#include <fstream>

bool recordsPlayback() { return true; }

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

// Raw 16-bit files counting on from `first`: (first + k, -(first + k)) at sample k.
QByteArray countingSamples(int first, int count) {
  QByteArray bytes;
  for (int k = first; k < first + count; ++k)
    for (const int16_t v : {static_cast<int16_t>(k), static_cast<int16_t>(-k)})
      bytes.append(reinterpret_cast<const char*>(&v), 2);
  return bytes;
}

// What the device played holds each file whole, one after the other and round again.
TEST_F(StreamingUnitTest, FilesJoinWithoutAGapOrARepeat) {
  const int sizes[] = {300, 200, 100};
  QStringList paths;
  std::vector<Sample> round;
  for (int f = 0, first = 1; f < 3; first += sizes[f++]) {
    QFile file(dir.filePath(QString("part%1.bin").arg(f)));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(countingSamples(first, sizes[f]));
    paths << file.fileName();
    for (int k = first; k < first + sizes[f]; ++k) round.emplace_back(k / 32768.0f, -k / 32768.0f);
  }
  view->addFiles(2, paths);
  view->setSampleRate(50000);
  connectAndEnable();
  view->enabledCheck()->click();
  const std::string data = recordingPath() + ".sigmf-data";
  const auto recorded = [&] { return QFileInfo(QString::fromStdString(data)).size() / 8; };
  ASSERT_TRUE(waitUntil([&] { return recorded() > 20000; }));
  central.stopStreaming();
  std::vector<Sample> played(static_cast<size_t>(recorded()));
  std::ifstream(data, std::ios::binary)
      .read(reinterpret_cast<char*>(played.data()),
            static_cast<std::streamsize>(played.size() * 8));
  const auto start = std::find(played.begin(), played.end(), round.front());
  ASSERT_GE(played.end() - start, 1800);
  EXPECT_TRUE(std::equal(round.begin(), round.end(), start));
  EXPECT_TRUE(std::equal(round.begin(), round.end(), start + 600));
  EXPECT_TRUE(std::equal(round.begin(), round.end(), start + 1200));
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
