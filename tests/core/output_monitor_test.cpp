// SPDX-License-Identifier: MIT
// The output monitor: its analysis on signals of known figures, the tap between the threads,
// and the figures of live output against numpy's on the simulated device's recording.
#include "core/output_monitor.h"
#include "dsp/output_analysis.h"
#include "panel_fixture.h"
#include "scpi_client.h"

#include <QComboBox>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <gtest/gtest.h>

#include <cmath>
#include <thread>

bool recordsPlayback() { return true; }
// At 50e6 a second the default limit would write 160 MB in a test.
static const bool recordingLimited = setenv("KRT40_SIM_RECORD_MAX", "3000000", 0) == 0;

namespace {

std::vector<Sample> tone(int count, double cyclesPerSample, float amplitude) {
  std::vector<Sample> x(static_cast<size_t>(count));
  for (int t = 0; t < count; ++t)
    x[size_t(t)] = std::polar(amplitude, static_cast<float>(2 * M_PI * cyclesPerSample * t));
  return x;
}

// A tone reads its level at its bin, DC in the middle, whatever the bins and however few
// samples the block holds; a short block still gives figures instead of nothing.
TEST(SpectrumAverager, ToneReadsItsLevelAtItsBin) {
  struct Case {
    int bins, samples, bin;
    float amplitude;
  };
  for (const Case c : {Case{1024, 65536, 100, 1.0f}, Case{16384, 65536, -2000, 0.1f},
                       Case{16384, 5000, 4096, 0.5f}, Case{1000, 4096, 10, 1.0f}}) {
    SpectrumAverager spectrum;
    spectrum.setBins(c.bins);
    const int bins = spectrum.bins();
    const std::vector<Sample> x = tone(c.samples, double(c.bin) / bins, c.amplitude);
    spectrum.add(x.data(), c.samples);
    const std::vector<float> levels = spectrum.levelsDbfs();
    ASSERT_EQ(int(levels.size()), bins);
    const auto peak = std::max_element(levels.begin(), levels.end()) - levels.begin();
    // A block shorter than the bins is windowed as it is: the tone spreads, its peak stays near.
    const bool whole = c.samples >= bins;
    EXPECT_NEAR(peak, bins / 2 + c.bin, whole ? 0 : 1) << c.bins << " bins, " << c.samples;
    EXPECT_NEAR(levels[size_t(peak)], 20 * std::log10(c.amplitude), whole ? 0.01 : 1.0);
    EXPECT_LT(levels[size_t(bins / 2 + c.bin + bins / 8) % bins], -90) << "side lobes";
  }
}

// Two levels in known proportion: 1 % of the samples 10 dB above the rest.
TEST(CcdfAccumulator, ReadsTheLevelsOfAKnownMix) {
  std::vector<Sample> x(100000, Sample(1, 0));
  for (size_t k = 0; k < x.size(); k += 100) x[k] = Sample(std::sqrt(10.0f), 0);
  CcdfAccumulator ccdf;
  EXPECT_TRUE(std::isnan(ccdf.paprDb()));
  ccdf.add(x.data(), 50000);
  ccdf.add(x.data() + 50000, 50000);
  const double mean = 10 * std::log10(0.99 + 0.1);
  EXPECT_NEAR(ccdf.meanPowerDbfs(), mean, 1e-9);
  EXPECT_NEAR(ccdf.levelAtProbability(0.005), 10 - mean, 0.01);
  EXPECT_NEAR(ccdf.paprDb(), 10 - mean, 0.01);
  EXPECT_NEAR(ccdf.levelAtProbability(0.02), -mean, 0.01);
  const auto curve = ccdf.curve();
  ASSERT_FALSE(curve.empty());
  EXPECT_NEAR(curve.front().second, 1.0, 1e-9) << "only the high samples are above the mean";
  EXPECT_NEAR(curve.back().first, 10 - mean, 0.01);
}

// The streaming thread's side: a snapshot every interval at most, whole when samples come fast,
// and none mixing samples from before a restart with those after.
TEST(OutputTap, SnapshotsAreWholeSpacedAndOfOneRun) {
  OutputTap tap;
  tap.setEnabled(true);
  std::vector<Sample> block(40000, Sample(0.5f, 0));
  EXPECT_EQ(tap.take(), nullptr);
  EXPECT_EQ(tap.collect(block.data(), 40000), nullptr) << "not full yet";
  block.assign(block.size(), Sample(0.25f, 0));
  OutputSnapshot* full = tap.collect(block.data(), 40000);
  ASSERT_NE(full, nullptr);
  tap.publish();
  EXPECT_EQ(tap.collect(block.data(), 40000), nullptr) << "too soon after the last";
  const OutputSnapshot* taken = tap.take();
  ASSERT_NE(taken, nullptr);
  EXPECT_EQ(taken->count, OutputTap::snapshotSamples);
  EXPECT_EQ(taken->samples[39999], Sample(0.5f, 0));
  EXPECT_EQ(taken->samples[40000], Sample(0.25f, 0));
  EXPECT_EQ(tap.take(), nullptr) << "taken once";

  std::this_thread::sleep_for(OutputTap::interval);
  EXPECT_EQ(tap.collect(block.data(), 1000), nullptr);
  tap.restart(0);
  block.assign(block.size(), Sample(1, 0));
  EXPECT_EQ(tap.collect(block.data(), 40000), nullptr);
  ASSERT_NE(tap.collect(block.data(), 40000), nullptr);
  tap.publish();
  taken = tap.take();
  ASSERT_NE(taken, nullptr);
  EXPECT_EQ(taken->samples[0], Sample(1, 0)) << "the fill from before the restart is dropped";
  EXPECT_EQ(taken->generation, tap.generation());
}

// ---- Live output against the recording --------------------------------------------------

class MonitorTest : public PanelFixture {
protected:
  // Set up before the device opens, so that the recording holds only the signal under test.
  void play(const QStringList& commands, int64_t samples) {
    monitor.show();
    central.setRFEnabled(true);
    central.setModEnabled(true);
    {
      ScpiClient client(central.scpiServerPort());
      for (const QString& line : commands) client.command(line);
    }
    connectDevice();
    ASSERT_TRUE(waitUntil([&] { return monitor.ccdf().count() >= samples; }, 15000));
    central.stopStreaming();
    device.close();  // completes the recording's description
  }

  // numpy's figures from the recording, by the script beside this file.
  QJsonObject reference(const QStringList& args) {
    const QString script = QFileInfo(__FILE__).dir().filePath("monitor_reference.py");
    QProcess python;
    python.start("/usr/bin/python3",
                 QStringList{script, QString::fromStdString(recordingPath())} + args);
    EXPECT_TRUE(python.waitForFinished(60000));
    EXPECT_EQ(python.exitCode(), 0) << python.readAllStandardError().toStdString();
    return QJsonDocument::fromJson(python.readAllStandardOutput()).object();
  }

  OutputMonitor monitor{&device};
};

TEST_F(MonitorTest, MultitoneCcdfAndPaprAgreeWithTheRecording) {
  // The spacing first: a count is clamped to what fits the span at the spacing of the moment.
  play({":MTON:FSP 10 kHz", ":MTON:NTON 64", ":MTON:PHAS RAND", ":MTON:PHAS:SEED 7", ":MTON ON"},
       500000);
  EXPECT_EQ(ScpiClient(central.scpiServerPort()).query(":MTON:NTON?"), "64");
  const QJsonObject numpy = reference({"ccdf"});
  const CcdfAccumulator& ccdf = monitor.ccdf();
  EXPECT_NEAR(ccdf.meanPowerDbfs(), numpy["mean_dbfs"].toDouble(), 0.05);
  EXPECT_NEAR(ccdf.levelAtProbability(0.01), numpy["p1"].toDouble(), 0.2);
  EXPECT_NEAR(ccdf.levelAtProbability(0.001), numpy["p0.1"].toDouble(), 0.2);
  EXPECT_NEAR(ccdf.paprDb(), numpy["p0.01"].toDouble(), 0.2);
  EXPECT_GT(ccdf.paprDb(), 6.0) << "64 tones of random phases are far from a constant envelope";
}

// AM of a 100 kHz sine: the sidebands sit exactly on bins of a 16384-point spectrum, each at
// depth / 2 relative to the carrier.
TEST_F(MonitorTest, AmSidebandsAreDepthOverTwoBelowTheCarrier) {
  monitor.setBins(16384);
  play({":AM:FREQ 100 kHz", ":AM:DEPT 60", ":AM ON"}, 500000);
  const int offset = static_cast<int>(std::lround(100e3 / monitor.sampleRateHz() * 16384));
  const QJsonObject numpy = reference({"spectrum", "16384", "0", QString::number(offset)});
  const std::vector<float> levels = monitor.spectrum().levelsDbfs();
  const double carrier = levels[8192], sideband = levels[size_t(8192 + offset)];
  const double numpySideband = numpy[QString::number(offset)].toDouble() - numpy["0"].toDouble();
  EXPECT_NEAR(sideband - carrier, 20 * std::log10(0.6 / 2), 0.2);
  EXPECT_NEAR(sideband - carrier, numpySideband, 0.2);
  EXPECT_NEAR(levels[size_t(8192 - offset)] - carrier, 20 * std::log10(0.6 / 2), 0.2);
}

// Digital modulation at 100 ksymbol/s with the panel's AWGN at 10 dB SNR over a band the
// noise record sets: between the signal's edge and the band's, one bin holds the signal power
// minus the SNR minus the ratio of the noise band to the bin's noise bandwidth.
TEST_F(MonitorTest, AwgnFloorSitsAtTheAskedSnr) {
  monitor.setBins(4096);
  play({":RAD:CUST:SRAT 100 kHz", ":OUTP:IMP:AWGN:IBW 100 MHz", ":OUTP:IMP:AWGN:SNR 10",
        ":OUTP:IMP:AWGN ON", ":RAD:CUST ON"},
       300000);
  const double binHz = monitor.sampleRateHz() / 4096;
  ASSERT_TRUE(waitUntil([&] { return impairments.awgnBandwidth() < 100e6; }));
  const double noiseBandHz = impairments.awgnBandwidth();
  const int lo = static_cast<int>(100e3 / binHz), hi = static_cast<int>(0.4 * noiseBandHz / binHz);
  ASSERT_LT(lo + 100, hi) << "room between the signal and the band's edge";
  const QString region = QString("median:%1:%2").arg(lo).arg(hi);
  const QJsonObject numpy = reference({"spectrum", "4096", region});

  const std::vector<float> levels = monitor.spectrum().levelsDbfs();
  std::vector<float> floor(levels.begin() + 2048 + lo, levels.begin() + 2048 + hi);
  floor.insert(floor.end(), levels.begin() + 2048 - hi, levels.begin() + 2048 - lo);
  std::nth_element(floor.begin(), floor.begin() + floor.size() / 2, floor.end());
  const double median = floor[floor.size() / 2];
  const double signal = monitor.ccdf().meanPowerDbfs() - 10 * std::log10(1.1);
  const double binNoiseHz = binHz * monitor.spectrum().noiseBandwidthBins();
  EXPECT_NEAR(median, signal - 10 - 10 * std::log10(noiseBandHz / binNoiseHz), 0.3);
  EXPECT_NEAR(median, numpy[region].toDouble(), 0.2);
}

}  // namespace
