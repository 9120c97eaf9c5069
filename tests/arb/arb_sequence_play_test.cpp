// SPDX-License-Identifier: MIT
// Sequences in the panel: loaded by the arb mode and played with their hops where the samples
// reach them (the device's events and its recording), and the editor's rules of saving.
#include "arb/arb_mode/mode_view_arb.h"
#include "arb/sequence_editor/arb_sequence_editor.h"
#include "modes/unit_panel_test.h"
#include "support/warnings.h"

#include <QLabel>
#include <QListWidget>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>

bool recordsPlayback() { return true; }

namespace {

using ArbSequencePlayTest = UnitPanelTest<ModeViewArb>;
using Hops = std::vector<std::pair<int64_t, double>>;

// The (first sample, frequency) of each capture segment whose frequency differs from the one
// before, from the recording's meta written at the abort.
Hops recordedHops() {
  std::ifstream in(recordingPath() + ".sigmf-meta");
  const nlohmann::json meta = nlohmann::json::parse(in, nullptr, false);
  Hops hops;
  if (meta.is_discarded()) return hops;
  for (const auto& capture : meta.value("captures", nlohmann::json::array())) {
    const double hz = capture.value("core:frequency", 0.0);
    if (hops.empty() || hops.back().second != hz)
      hops.emplace_back(capture.value("core:sample_start", int64_t{-1}), hz);
  }
  return hops;
}

std::vector<Sample> recordedSamples(int64_t first, size_t count) {
  std::vector<Sample> samples(count);
  std::ifstream in(recordingPath() + ".sigmf-data", std::ios::binary);
  in.seekg(first * 8);
  in.read(reinterpret_cast<char*>(samples.data()), static_cast<std::streamsize>(count * 8));
  return in ? samples : std::vector<Sample>{};
}

// 2 samples twice, a hop, 3 constant samples, a hop, 1 sample: 8 samples, hops at 4 and 7.
QString writeTwoHops(const QString& path) {
  ArbSequence sequence;
  ArbSequenceEntry* data = sequence.add(ArbSequenceEntry::IQData);
  data->samples = {{0.5f, 0.0f}, {0.0f, -0.25f}};
  data->repetitions = 2;
  sequence.add(ArbSequenceEntry::FreqChange)->frequency = 1.5e9;
  ArbSequenceEntry* gap = sequence.add(ArbSequenceEntry::Constant);
  gap->constant = {0.25f, 0.25f};
  gap->constantLength = 3;
  sequence.add(ArbSequenceEntry::FreqChange)->frequency = 2e9;
  sequence.add(ArbSequenceEntry::IQData)->samples = {{-0.5f, 0.0f}};
  std::vector<int> order;
  for (const auto& e : sequence.entries()) order.push_back(e->id);
  EXPECT_TRUE(sequence.save(path, order));
  return path;
}

TEST_F(ArbSequencePlayTest, TwoHopsRetuneWhereTheSamplesReachThem) {
  client.command(":FREQ 1 GHz;:RAD:ARB:SRAT 1 MHz");
  view->loadSequence(writeTwoHops(dir.filePath("two.seq")));
  EXPECT_EQ(client.query(":RAD:ARB:WAV?;:RAD:ARB:WAV:LEN?;:RAD:ARB:SAMP:COUN?"), "\"two.seq\";8;8");
  int durations = 0;  // both lengths show the samples' time and two switch times
  for (const QLabel* label : view->findChildren<QLabel*>())
    durations += label->text() == "408.000 us";
  EXPECT_EQ(durations, 2);

  connectAndEnable();
  restart(":RAD:ARB ON", 1e6);
  ASSERT_TRUE(waitUntil([&] { return played({"krtSetFrequency"}, 6).size() == 6; }));
  const Calls expected = {{"krtSetFrequency", 1e9},   {"krtSubmitIQ", 4},
                          {"krtSetFrequency", 1.5e9}, {"krtSubmitIQ", 3},
                          {"krtSetFrequency", 2e9},   {"krtSubmitIQ", 1},
                          {"krtSubmitIQ", 4},         {"krtSetFrequency", 1.5e9}};
  const Calls calls = played({"krtSetFrequency", "krtSubmitIQ", "krtFlushAndWait"}, 8);
  // Hops every few samples underrun and log without pause: single shot ends them at once, and
  // its abort rewrites the recording's meta.
  restart(":RAD:ARB:TRIG:TYPE SING", 1e6);
  EXPECT_EQ(calls, expected) << "the repeat starts on the last hop's frequency, unflushed";
  // The recording began at the device's opening; the sequence starts 4 samples before the
  // first hop.
  ASSERT_TRUE(waitUntil([] { return recordedHops().size() >= 5; }));
  const Hops hops = recordedHops();
  const int64_t start = hops[1].first - 4;
  EXPECT_EQ(Hops(hops.begin() + 1, hops.begin() + 5),
            (Hops{{start + 4, 1.5e9}, {start + 7, 2e9}, {start + 12, 1.5e9}, {start + 15, 2e9}}));
  // Scaled as one range: the peak component 0.5 becomes 1.
  const Sample a(1, 0), b(0, -0.5f), k(0.5f, 0.5f), c(-1, 0);
  std::vector<Sample> samples;  // the meta may name samples still on their way to the disk
  ASSERT_TRUE(waitUntil([&] { return !(samples = recordedSamples(start, 8)).empty(); }));
  EXPECT_EQ(samples, (std::vector<Sample>{a, b, a, b, k, k, k, c}));

  // Single shot: one pass a trigger, behind its mark, then a flush.
  client.command("*TRG");
  ASSERT_TRUE(waitUntil([&] { return !played({"krtFlushAndWait"}).empty(); }));
  const Calls pass = {{"krtSubmitTrigger", 0},
                      {"krtSubmitIQ", 4},
                      {"krtSubmitIQ", 3},
                      {"krtSubmitIQ", 1},
                      {"krtFlushAndWait", 0}};
  EXPECT_EQ(played({"krtSubmitTrigger", "krtSubmitIQ", "krtFlushAndWait"}), pass);
}

// A single hop, which only a hand-made file holds, tunes once before the first sample; a file
// with a bad header leaves nothing loaded, with its box.
TEST_F(ArbSequencePlayTest, OneHopTunesBeforeTheFirstSample) {
  ArbSequence sequence;
  sequence.add(ArbSequenceEntry::IQData)->samples = {{1, 0}, {0, 1}};
  sequence.add(ArbSequenceEntry::FreqChange)->frequency = 3e9;
  sequence.save(dir.filePath("one.seq"), {sequence.entries()[0]->id, sequence.entries()[1]->id});
  client.command(":FREQ 1 GHz;:RAD:ARB:SRAT 1 MHz");
  view->loadSequence(dir.filePath("one.seq"));
  connectAndEnable();
  restart(":RAD:ARB ON", 1e6);
  ASSERT_TRUE(waitUntil([&] { return !played({"krtSubmitIQ"}).empty(); }));
  Calls calls = played({"krtSetFrequency", "krtSubmitIQ"});
  calls.resize(3);
  EXPECT_EQ(calls,
            (Calls{{"krtSetFrequency", 1e9}, {"krtSetFrequency", 3e9}, {"krtSubmitIQ", 16666}}));

  Warnings warnings;
  QFile bad(dir.filePath("bad.seq"));
  ASSERT_TRUE(bad.open(QIODevice::WriteOnly) && bad.write(QByteArray("KSEQ\2\0\0\0", 8)) == 8);
  bad.close();
  view->loadSequence(bad.fileName());
  EXPECT_EQ(client.query(":RAD:ARB:WAV:LOAD?;:RAD:ARB:WAV:LEN?"), "0;0");
  ArbSequenceEditor editor;
  EXPECT_FALSE(editor.loadSequenceFrom(bad.fileName()));
  EXPECT_EQ(warnings.shown, QStringList({"Invalid File: Invalid file format.",
                                         "Invalid File: Invalid file format."}));
}

// The size limit and the one-hop rule stop a save with their boxes; the list's order, after a
// row moved, is the order saved; a constant length of 0 from a file survives a save.
TEST_F(ArbSequencePlayTest, EditorSavesByItsRulesInTheListsOrder) {
  Warnings warnings;
  ArbSequenceEditor editor;
  const QString path = dir.filePath("edited.seq");
  editor.addSequenceConstant();
  const int constantId = editor.listOrder().front();
  editor.sequence().find(constantId)->constantLength = ArbSequence::maxTotalSamples + 1;
  EXPECT_FALSE(editor.saveSequenceTo(path));
  editor.sequence().find(constantId)->constantLength = ArbSequence::maxTotalSamples;
  editor.addSequenceFreqChange();
  EXPECT_FALSE(editor.saveSequenceTo(path));
  EXPECT_EQ(warnings.shown,
            QStringList({"Invalid Sequence Size: Total sequence size too large.",
                         "Invalid Sequence: Invalid number of frequency changes. Cannot be "
                         "exactly 1 frequency change."}));
  editor.addSequenceFreqChange();
  editor.addSequenceArb();
  EXPECT_TRUE(editor.hasPendingChanges());
  auto* list = editor.findChild<QListWidget*>();
  ASSERT_TRUE(list->model()->moveRow(QModelIndex(), 3, QModelIndex(), 0));
  editor.sequence().find(constantId)->constantLength = 0;
  EXPECT_TRUE(editor.saveSequenceTo(path));
  EXPECT_FALSE(editor.hasPendingChanges());

  ArbSequenceEditor reopened;
  ASSERT_TRUE(reopened.loadSequenceFrom(path));
  std::vector<int> types;
  for (const auto& e : reopened.sequence().entries()) types.push_back(e->type);
  EXPECT_EQ(types, (std::vector<int>{0, 1, 2, 2}));
  EXPECT_EQ(reopened.sequence().entries()[1]->constantLength, 0);
  EXPECT_EQ(warnings.shown.size(), 2);
}

}  // namespace
