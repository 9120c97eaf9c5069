// SPDX-License-Identifier: MIT
// Custom OFDM editors and view: validity colours, the resource form and list, default
// configurations, files and the export.
#include "support/form_rows.h"
#include "wireless/ofdm/iq_line_edit.h"
#include "wireless/ofdm/mode_view_ofdm.h"
#include "wireless/ofdm/ofdm_resource_view.h"
#include "wireless/ofdm/ofdm_symbol_editor.h"
#include "wireless/ofdm/ofdm_symbol_editor_dialog.h"
#include "wireless/ofdm/range_editor.h"

#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

void typeInto(QLineEdit* edit, const QString& text) {
  edit->setText(text);
  emit edit->editingFinished();
}

bool isRed(const QLineEdit* edit) { return edit->styleSheet().contains("red"); }

TEST(OfdmEdits, InvalidTextTurnsRedAndKeepsWhatCameBefore) {
  RangeEditor range;
  QSignalSpy rangeSpy(&range, &RangeEditor::rangeChanged);
  typeInto(&range, "9, 5:3, 1");
  EXPECT_TRUE(isRed(&range));
  EXPECT_EQ(range.values(), std::vector<int>{9});
  typeInto(&range, "-6:1,1:6");
  EXPECT_FALSE(isRed(&range));
  EXPECT_EQ(range.values().size(), 13u);
  EXPECT_EQ(rangeSpy.count(), 2);

  IQLineEdit iq;
  QSignalSpy iqSpy(&iq, &IQLineEdit::valuesChanged);
  typeInto(&iq, "1, 2, 3");
  EXPECT_FALSE(isRed(&iq));
  EXPECT_EQ(iq.values(), (std::vector<Sample>{{1, 2}, {3, 0}}));
  typeInto(&iq, "1, q");
  EXPECT_TRUE(isRed(&iq));
  EXPECT_EQ(iqSpy.count(), 2);
}

TEST(OfdmResourceView, FormRowsAndItems) {
  OFDMResourceView view;
  const QStringList expected = {
      "Enabled=QCheckBox", "Name=QLineEdit", "Symbol Range=RangeEditor",
      "Subcarrier Indices=RangeEditor", "Modulation Type=MyComboBox",
      "Guard Interval (%)=DoubleEdit", "Scalar=DoubleEdit", "Data Type=MyComboBox",
      "Custom I/Q=IQLineEdit", "=QLabel", "Bit Type=MyComboBox", "Custom Bits=SymbolLineEdit",
      "BPSK=0", "QPSK=2", "8PSK=6", "16PSK=8", "16QAM=9", "QAM64=10", "QAM256=11",
      "Bits=0", "I/Q values=1", "PN9=9", "PN15=15", "PN23=23", "Custom Bits=-1"};
  EXPECT_EQ(formRows(view), expected);
}

// The list follows the configuration's resources: add, copy, rename, edit and remove.
TEST(OfdmSymbolEditor, WorksOnTheConfigurationsList) {
  std::vector<OFDMResource> list = defaultOfdmConfig(1).resources;
  OFDMSymbolEditorDialog dialog(list);
  EXPECT_EQ(dialog.windowTitle(), "OFDM Symbol Editor");
  OFDMSymbolEditor& editor = *dialog.editor();

  editor.list()->setCurrentRow(4);  // "Data"
  editor.copyPressed();
  ASSERT_EQ(list.size(), 7u);
  EXPECT_EQ(list[6].name, "Data Copy");
  EXPECT_EQ(list[6].index, 6);
  EXPECT_TRUE(list[6].enabled);
  editor.addPressed();
  ASSERT_EQ(list.size(), 8u);
  EXPECT_EQ(list[7].name, "Unnamed");
  EXPECT_EQ(list[7].index, 7);
  EXPECT_FALSE(list[7].enabled);

  // The form writes back into the selected resource, and the name into the list.
  editor.view()->findChildren<QLineEdit*>()[0]->setText("Extra");  // "Name"
  EXPECT_EQ(list[7].name, "Extra");
  EXPECT_EQ(editor.list()->item(7)->text(), "Extra");
  typeInto(editor.view()->findChildren<RangeEditor*>()[1], "-3:-1");
  EXPECT_EQ(list[7].subcarrierIndices.values, (std::vector<int>{-3, -2, -1}));

  editor.list()->setCurrentRow(0);
  editor.removePressed();
  ASSERT_EQ(list.size(), 7u);
  EXPECT_EQ(list[0].name, "Preamble Long 1");
  EXPECT_EQ(editor.view()->resource(), &list[0]);
  editor.addPressed();
  EXPECT_EQ(list.back().index, 8);  // after the highest, not the count

  QSignalSpy accepted(&dialog, &QDialog::accepted);
  for (QPushButton* b : editor.findChildren<QPushButton*>())
    if (b->text() == "Done") b->click();
  EXPECT_EQ(accepted.count(), 1);
}

// The editor adds one resource and is left with "Done".
class AnsweredView : public ModeViewOFDM {
protected:
  int runDialog(QDialog& dialog) override {
    static_cast<OFDMSymbolEditorDialog&>(dialog).editor()->addPressed();
    return QDialog::Accepted;
  }
};

TEST(ModeViewOFDM, DefaultsClampsAndTheSymbolTable) {
  AnsweredView view;
  QSignalSpy updated(&view, &ModeWidget::updated);
  EXPECT_EQ(view.generateWaveform().size(), 16u * 80u);
  EXPECT_EQ(view.sampleRate(), 5e6);
  const QStringList rows = formRows(view);
  EXPECT_TRUE(rows.contains("Data Only=0") && rows.contains("Custom=-1"));

  auto* defaults = view.findChildren<MyComboBox*>()[1];
  defaults->selectValue(1);
  view.loadDefaultConfig();
  EXPECT_EQ(view.configuration().resources.size(), 6u);
  EXPECT_EQ(view.configuration().symbolCount, 24);
  EXPECT_EQ(defaults->currentValue(), -1);
  EXPECT_EQ(updated.count(), 1);
  view.loadDefaultConfig();  // "Custom" picks nothing
  EXPECT_EQ(updated.count(), 1);

  for (const auto& [typed, kept] : {std::pair{0.7, 0.5}, {-0.1, 0.0}, {0.125, 0.125}}) {
    view.guardIntervalChanged(typed);
    EXPECT_EQ(view.configuration().guardInterval, kept) << typed;
  }
  auto* fft = view.findChildren<MyComboBox*>()[0];
  fft->selectValue(128);
  EXPECT_EQ(view.sampleRate(), 10e6);
  EXPECT_TRUE(formRows(view).contains("Bandwidth=QLabel"));
  EXPECT_EQ(view.configuration().fftSize, 128);

  const int before = updated.count();
  view.editSymbolTable();
  EXPECT_EQ(view.configuration().resources.size(), 7u);
  EXPECT_EQ(updated.count(), before + 1);
}

TEST(ModeViewOFDM, FilesAndTheExport) {
  QTemporaryDir dir;
  const QString oldDir = QDir::currentPath();
  QDir::setCurrent(dir.path());
  ModeViewOFDM view;
  view.saveWaveformPressed();
  QFile csv("ofdm_waveform.csv");
  ASSERT_TRUE(csv.open(QIODevice::ReadOnly));
  EXPECT_EQ(csv.readAll().count('\n'), 16 * 80);

  const QString ini = dir.filePath("config.ini");
  view.guardIntervalChanged(0.0);
  ASSERT_TRUE(view.saveConfigFile(ini));
  ModeViewOFDM other;
  other.findChildren<MyComboBox*>()[1]->selectValue(1);
  other.loadDefaultConfig();
  ASSERT_TRUE(other.loadConfigFile(ini));
  EXPECT_EQ(other.configuration().symbolCount, 16);
  EXPECT_EQ(other.generateWaveform().size(), 16u * 64u);
  {
    QSettings settings(ini, QSettings::IniFormat);
    settings.setValue("OFDM/Version", 2);
    settings.setValue("OFDM/SymbolCount", 5);
  }
  EXPECT_FALSE(other.loadConfigFile(ini));
  EXPECT_EQ(other.configuration().symbolCount, 16);
  QDir::setCurrent(oldDir);
}

}  // namespace
