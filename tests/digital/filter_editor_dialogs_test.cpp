// SPDX-License-Identifier: MIT
// The two filter editor dialogs: controls, refusals, designs, table edits, files and plots.
#include "digital/basic_table_widget.h"
#include "digital/channel_filter_editor_dialog.h"
#include "digital/filter_designs.h"
#include "digital/pulse_shaping_filter_editor_dialog.h"
#include "shell/message_box.h"
#include "widgets/am_plot.h"

#include <QFile>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

namespace {

using Taps = std::vector<float>;
using ComplexTaps = std::vector<Sample>;

// Captures the warnings of a test instead of printing them.
class FilterEditorTest : public ::testing::Test {
protected:
  void SetUp() override {
    previous = setWarningPresenter([this](QWidget*, const QString& title, const QString& text) {
      warnings.append(title + ": " + text);
    });
  }
  void TearDown() override { setWarningPresenter(previous); }

  QStringList warnings;
  WarningPresenter previous;
  QTemporaryDir dir;
};

QStringList buttonTexts(const QWidget& dialog) {
  QStringList texts;
  for (const QPushButton* button : dialog.findChildren<QPushButton*>()) texts << button->text();
  return texts;
}

QPushButton* button(const QWidget& dialog, const QString& text) {
  for (QPushButton* b : dialog.findChildren<QPushButton*>())
    if (b->text() == text) return b;
  ADD_FAILURE() << "no button " << text.toStdString();
  return nullptr;
}

// The impulse plot comes first, the spectrum second.
AMPlot* plot(const QWidget& dialog, int index) { return dialog.findChildren<AMPlot*>().at(index); }

QStringList columnTexts(const BasicTableWidget& table, int column) {
  QStringList texts;
  for (int row = 0; row < table.rowCount(); ++row) texts << table.item(row, column)->text();
  return texts;
}

void writeFile(const QString& path, const QByteArray& bytes) {
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(bytes);
}

QByteArray readFile(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::vector<double> ranges(const AMPlot* p) { return {p->xMin, p->xMax, p->yMin, p->yMax}; }

TEST_F(FilterEditorTest, ControlsTitlesAndPlots) {
  PulseShapingFilterEditorDialog pulse({0.25f, 1.0f, -0.5f}, 8);
  ChannelFilterEditorDialog channel({{1, -0.5f}, {0.25f, 2}});
  for (const QDialog* dialog : {static_cast<QDialog*>(&pulse), static_cast<QDialog*>(&channel)}) {
    EXPECT_EQ(dialog->windowTitle(), "Custom Filter");
    EXPECT_EQ(plot(*dialog, 0)->title + "/" + plot(*dialog, 0)->xLabel, "Impulse/Samples");
    EXPECT_EQ(plot(*dialog, 1)->title + "/" + plot(*dialog, 1)->xLabel, "Spectrum/Freq");
  }
  auto* table = pulse.findChild<BasicTableWidget*>();
  EXPECT_EQ(table->horizontalHeaderItem(0)->text(), "Filter Tap");
  EXPECT_EQ(columnTexts(*table, 0), QStringList({"0.250000", "1.000000", "-0.500000"}));
  EXPECT_EQ(table->item(0, 0)->textAlignment(), int(Qt::AlignRight | Qt::AlignVCenter));
  EXPECT_EQ(pulse.findChild<QLabel*>()->text(), "Oversample = 8");
  EXPECT_EQ(buttonTexts(pulse),
            QStringList({"Add Row", "Remove Row", QStringLiteral("Load RRC (\u03b1 = 0.35)"),
                         "Load Gaussian (0.5)", "Load Rectangular Window", "Load Half Sine",
                         "Load Filter", "Save Filter", "Accept"}));
  const AMPlot* impulse = plot(pulse, 0);
  ASSERT_EQ(impulse->series.size(), 1);
  EXPECT_EQ(impulse->series[0]->points,
            (std::vector<std::pair<double, double>>{{1, 0.25}, {2, 1.0}, {3, -0.5}}));
  EXPECT_EQ(ranges(impulse), std::vector<double>({1, 3, -0.5, 1.0}));
  // The first 512 bins against 0 to 0.5.
  const auto& bins = plot(pulse, 1)->series.at(0)->points;
  ASSERT_EQ(bins.size(), 512u);
  EXPECT_EQ(bins[0].first, 0.0);
  EXPECT_FLOAT_EQ(bins[0].second, 10 * std::log10(0.75f * 0.75f + 1e-7f));
  EXPECT_EQ(bins[511].first, 511.0 / 1024);
  EXPECT_EQ(ranges(plot(pulse, 1)), std::vector<double>({0, 0.5, -90, 10}));

  auto* complexTable = channel.findChild<BasicTableWidget*>();
  EXPECT_EQ(complexTable->horizontalHeaderItem(1)->text(), "Imag");
  EXPECT_EQ(columnTexts(*complexTable, 1), QStringList({"-0.500000", "2.000000"}));
  EXPECT_EQ(buttonTexts(channel), QStringList({"Add Row", "Remove Row", "Load Default", "Normalize",
                                               "Load Filter", "Save Filter", "Accept"}));
  const AMPlot* complexImpulse = plot(channel, 0);
  ASSERT_EQ(complexImpulse->series.size(), 2);
  EXPECT_EQ(complexImpulse->series[0]->color, QColor(Qt::red));
  EXPECT_EQ(complexImpulse->series[1]->color, QColor(Qt::green));
  EXPECT_EQ(complexImpulse->series[1]->points[1], std::make_pair(2.0, 2.0));
  EXPECT_EQ(ranges(complexImpulse), std::vector<double>({1, 2, -0.5, 2}));
  // Zero frequency in the middle, X from -0.5; Y 2 dB beyond the extremes.
  const auto& shifted = plot(channel, 1)->series.at(0)->points;
  ASSERT_EQ(shifted.size(), 1024u);
  EXPECT_EQ(shifted[0].first, -0.5);
  EXPECT_EQ(shifted[512].first, 0.0);
  EXPECT_NEAR(shifted[512].second, 10 * std::log10(1.25 * 1.25 + 1.5 * 1.5), 1e-4);  // DC
  EXPECT_NEAR(shifted[0].second, 10 * std::log10(0.75 * 0.75 + 2.5 * 2.5), 1e-4);    // f = -0.5
  const auto [low, high] = std::minmax_element(shifted.begin(), shifted.end(),
                                               [](auto a, auto b) { return a.second < b.second; });
  EXPECT_EQ(ranges(plot(channel, 1)),
            std::vector<double>({-0.5, 0.5, low->second - 2, high->second + 2}));
}

// Accepting takes 4 to 256 taps; otherwise the warning, and the dialog stays open.
TEST_F(FilterEditorTest, FinalCheckTakesFourTo256Taps) {
  const QString refusal = "Invalid Number of Taps: Number of taps should be between 4 and 256.";
  for (int count : {0, 3, 4, 256, 257}) {
    const bool accepted = count >= 4 && count <= 256;
    PulseShapingFilterEditorDialog pulse(Taps(count, 0.125f), 4);
    ChannelFilterEditorDialog channel(ComplexTaps(count, {0.125f, 0}));
    for (QDialog* dialog : {static_cast<QDialog*>(&pulse), static_cast<QDialog*>(&channel)}) {
      warnings.clear();
      QSignalSpy acceptedSpy(dialog, &QDialog::accepted);
      button(*dialog, "Accept")->click();
      EXPECT_EQ(acceptedSpy.count(), accepted ? 1 : 0) << count;
      EXPECT_EQ(warnings, accepted ? QStringList() : QStringList{refusal}) << count;
    }
    EXPECT_EQ(pulse.taps().size(), static_cast<size_t>(count));
  }
}

TEST_F(FilterEditorTest, RowsAddAndRemoveAndAnEmptyTableStaysCleared) {
  PulseShapingFilterEditorDialog pulse({0.5f}, 4);
  button(pulse, "Add Row")->click();
  EXPECT_EQ(pulse.taps(), Taps({0.5f, 0.0f}));
  for (int i = 0; i < 3; ++i) button(pulse, "Remove Row")->click();
  EXPECT_TRUE(pulse.taps().empty());
  EXPECT_EQ(pulse.findChild<BasicTableWidget*>()->rowCount(), 0);
  EXPECT_TRUE(plot(pulse, 0)->series.isEmpty());
  EXPECT_TRUE(plot(pulse, 1)->series.isEmpty());

  ChannelFilterEditorDialog channel({});
  button(channel, "Remove Row")->click();
  EXPECT_TRUE(channel.taps().empty());
  EXPECT_TRUE(plot(channel, 0)->series.isEmpty());
  button(channel, "Add Row")->click();
  EXPECT_EQ(channel.taps(), ComplexTaps({{0, 0}}));
  EXPECT_EQ(columnTexts(*channel.findChild<BasicTableWidget*>(), 1), QStringList({"0.000000"}));
}

// The built-in designs: os x 8 + 1 taps of the named design.
TEST_F(FilterEditorTest, BuiltInDesignsUseTheOversample) {
  const int os = 4, n = 33;
  const struct {
    const char* button;
    std::function<void(float*)> design;
  } cases[] = {
      {"Load Gaussian (0.5)", [](float* h) { designGaussian(h, n, 0.5, os); }},
      {"Load Rectangular Window", [](float* h) { designRectangular(h, n, 0.25, os); }},
      {"Load Half Sine", [](float* h) { designHalfSine(h, n, os); }},
      {"", [](float* h) { designRootRaisedCosine(h, n, 0.35, os); }},
  };
  for (const auto& c : cases) {
    PulseShapingFilterEditorDialog pulse({}, os);
    button(pulse, *c.button ? c.button : QStringLiteral("Load RRC (\u03b1 = 0.35)"))->click();
    Taps expected(n);
    c.design(expected.data());
    EXPECT_EQ(pulse.taps(), expected) << c.button;
    EXPECT_EQ(pulse.findChild<BasicTableWidget*>()->rowCount(), n);
  }
}

TEST_F(FilterEditorTest, TableEditsAreReadClampedOrKept) {
  PulseShapingFilterEditorDialog pulse({0.5f, 0.5f, 0.5f, 0.5f, 0.5f, 1e-7f}, 4);
  auto* table = pulse.findChild<BasicTableWidget*>();
  const char* typed[] = {"2000", "-5000", "abc", " 0.75 ", "nan"};
  const float expected[] = {1024.0f, -1024.0f, 0.5f, 0.75f, 0.5f, 1e-7f};
  for (int row = 0; row < 5; ++row) table->item(row, 0)->setText(typed[row]);
  EXPECT_EQ(pulse.taps(), Taps(std::begin(expected), std::end(expected)));
  EXPECT_EQ(columnTexts(*table, 0), QStringList({"1024.000000", "-1024.000000", "0.500000",
                                                 "0.750000", "0.500000", "0.000000"}));
  EXPECT_EQ(plot(pulse, 0)->yMin, -1024.0);

  ChannelFilterEditorDialog channel({{0.5f, 0.5f}, {0.5f, 0.5f}});
  auto* complexTable = channel.findChild<BasicTableWidget*>();
  complexTable->item(0, 1)->setText("-1e9");
  complexTable->item(1, 0)->setText("");
  EXPECT_EQ(channel.taps(), ComplexTaps({{0.5f, -1024.0f}, {0.5f, 0.5f}}));
}

TEST_F(FilterEditorTest, LoadDefaultAndNormalize) {
  ChannelFilterEditorDialog channel({{3, 4}, {0, 0}});
  button(channel, "Normalize")->click();
  const ComplexTaps unit = channel.taps();
  EXPECT_FLOAT_EQ(unit[0].real(), 0.6f);
  EXPECT_FLOAT_EQ(unit[0].imag(), 0.8f);
  button(channel, "Load Default")->click();
  ComplexTaps passThrough(15, {0, 0});
  passThrough[7] = {1, 0};
  EXPECT_EQ(channel.taps(), passThrough);
  // A filter of no energy stays as it is.
  ChannelFilterEditorDialog zero(ComplexTaps(4, {0, 0}));
  button(zero, "Normalize")->click();
  EXPECT_EQ(zero.taps(), ComplexTaps(4, {0, 0}));
}

TEST_F(FilterEditorTest, FilesRoundTripAndFailuresKeepTheTaps) {
  const Taps taps = {0.1f, -1e-5f, 1024.0f, 0.333333343f};
  PulseShapingFilterEditorDialog pulse(taps, 4);
  ASSERT_TRUE(pulse.saveFilterFile(dir.filePath("pulse.csv")));
  EXPECT_EQ(readFile(dir.filePath("pulse.csv")), "0.1\n-1e-05\n1024\n0.33333334\n");
  PulseShapingFilterEditorDialog reloaded({}, 4);
  ASSERT_TRUE(reloaded.loadFilterFile(dir.filePath("pulse.csv")));
  EXPECT_EQ(reloaded.taps(), taps);

  const ComplexTaps complexTaps = {{0.1f, -0.2f}, {1e-6f, 3}};
  ChannelFilterEditorDialog channel(complexTaps);
  ASSERT_TRUE(channel.saveFilterFile(dir.filePath("channel.csv")));
  EXPECT_EQ(readFile(dir.filePath("channel.csv")), "0.1,-0.2\n1e-06,3\n");
  ChannelFilterEditorDialog complexReloaded({});
  ASSERT_TRUE(complexReloaded.loadFilterFile(dir.filePath("channel.csv")));
  EXPECT_EQ(complexReloaded.taps(), complexTaps);

  // Missing, a folder, too large (over 1 MiB or 16384 taps) or unwritable: false, and the
  // taps stay. What follows the end of the read doesn't count.
  writeFile(dir.filePath("huge.csv"), QByteArray(2 << 20, '1').replace(0, 1, "0.5\n"));
  writeFile(dir.filePath("many.csv"), QByteArray("1\n").repeated(16385));
  writeFile(dir.filePath("enough.csv"), QByteArray("1\n").repeated(16384) + "\n1\n1\n");
  PulseShapingFilterEditorDialog enough({}, 4);
  EXPECT_TRUE(enough.loadFilterFile(dir.filePath("enough.csv")));
  EXPECT_EQ(enough.taps().size(), 16384u);
  for (const char* name : {"missing.csv", "", "huge.csv", "many.csv"}) {
    EXPECT_FALSE(pulse.loadFilterFile(dir.filePath(name))) << name;
    EXPECT_FALSE(channel.loadFilterFile(dir.filePath(name))) << name;
  }
  EXPECT_FALSE(pulse.saveFilterFile(dir.filePath("no/such/folder.csv")));
  EXPECT_FALSE(channel.saveFilterFile(dir.path()));
  EXPECT_EQ(pulse.taps(), taps);
  EXPECT_EQ(channel.taps(), complexTaps);
  EXPECT_TRUE(warnings.isEmpty());  // the slots warn, after their file dialogs
}

// The read ends at the first line whose field 0 holds no number; values are clamped.
TEST_F(FilterEditorTest, FileContentsAreReadToTheFirstLineWithoutAValue) {
  const struct {
    std::string content;
    Taps pulse;
    ComplexTaps channel;
  } cases[] = {
      {"0.5\n0.25,junk\n\n0.125\n", {0.5f, 0.25f}, {{0.5f, 0}, {0.25f, 0}}},
      {"1,2\r\n3\r\n4,x\r\n,5\r\n6,7\r\n", {1, 3, 4}, {{1, 2}, {3, 0}, {4, 0}}},
      {"1e9,-1e9\n-inf,inf\n", {1024, -1024}, {{1024, -1024}, {-1024, 1024}}},
      {"Real,Imag\n1,2\n", {}, {}},
      {"", {}, {}},
      {std::string("\x00\xff\xfe\x01\n\x89PNG\n", 10), {}, {}},
      {"nan\n1\n", {}, {}},
  };
  for (const auto& c : cases) {
    const QString path = dir.filePath("in.csv");
    writeFile(path, QByteArray::fromStdString(c.content));
    PulseShapingFilterEditorDialog pulse({1, 1, 1, 1}, 4);
    ChannelFilterEditorDialog channel(ComplexTaps(4, {1, 1}));
    EXPECT_TRUE(pulse.loadFilterFile(path)) << c.content.c_str();
    EXPECT_TRUE(channel.loadFilterFile(path)) << c.content.c_str();
    EXPECT_EQ(pulse.taps(), c.pulse) << c.content.c_str();
    EXPECT_EQ(channel.taps(), c.channel) << c.content.c_str();
    EXPECT_EQ(pulse.findChild<BasicTableWidget*>()->rowCount(), static_cast<int>(c.pulse.size()));
  }
}

}  // namespace
