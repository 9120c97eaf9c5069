// SPDX-License-Identifier: MIT
// CustomIQDialog, DiffEncodingDialog, CustomIQPlot and the custom modulation files.
#include "digital/custom_iq_dialog.h"

#include "digital/basic_table_widget.h"
#include "digital/custom_iq_plot.h"
#include "digital/diff_encoding_dialog.h"
#include "digital/modulation_csv.h"
#include "shell/message_box.h"
#include "support/warnings.h"
#include "widgets/my_combo_box.h"

#include <QApplication>
#include <QFile>
#include <QImage>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

ModulationMap pointsOnly(std::vector<Sample> points) {
  ModulationMap map;
  map.states = std::move(points);
  return map;
}

using Offsets = std::vector<int32_t>;

QPushButton* button(const QWidget& dialog, const QString& text) {
  for (QPushButton* b : dialog.findChildren<QPushButton*>())
    if (b->text() == text) return b;
  ADD_FAILURE() << "no button " << text.toStdString();
  return nullptr;
}

BasicTableWidget* table(const QWidget& dialog) { return dialog.findChild<BasicTableWidget*>(); }

QStringList column(const QWidget& dialog, int index) {
  QStringList texts;
  for (int row = 0; row < table(dialog)->rowCount(); ++row)
    texts << table(dialog)->item(row, index)->text();
  return texts;
}

void expectMap(const ModulationMap& map, const ModulationMap& expected) {
  EXPECT_EQ(map.states, expected.states);
  EXPECT_EQ(map.differential, expected.differential);
  EXPECT_EQ(map.diffStates, expected.diffStates);
  EXPECT_EQ(map.offsetQ, expected.offsetQ);
}

// A valid file of `states` points (1, 0) and, when differential, `offsets` zeros.
QByteArray modulationFile(int states, bool differential, int offsets) {
  return "Version,1\nStates," + QByteArray::number(states) + "\n" +
         QByteArray("1,0\n").repeated(states) + "Differential," +
         (differential ? "true\nDiff States," + QByteArray::number(offsets) + "\n" +
                             QByteArray("0\n").repeated(offsets)
                       : QByteArray("false\n")) +
         "OffsetQ,false\n";
}

void writeFile(const QString& path, const QByteArray& bytes) {
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(bytes);
}

// Both dialogs accept a power of two of at least 2 rows, otherwise warn and stay open.
TEST(CustomIQDialog, AcceptTakesAPowerOfTwoOfRows) {
  for (int rows : {0, 1, 2, 3, 4, 6, 8}) {
    const bool good = rows == 2 || rows == 4 || rows == 8;
    CustomIQDialog custom(pointsOnly(std::vector<Sample>(rows)));
    DiffEncodingDialog diff(Offsets(rows, 1));
    for (QDialog* dialog : {static_cast<QDialog*>(&custom), static_cast<QDialog*>(&diff)}) {
      Warnings warnings;
      QSignalSpy accepted(dialog, &QDialog::accepted);
      button(*dialog, "Accept")->click();
      EXPECT_EQ(accepted.count(), good ? 1 : 0) << rows;
      EXPECT_EQ(warnings.shown, good ? QStringList()
                                     : QStringList("Invalid Number of States: The number of symbol "
                                                   "states should be a power of two."));
    }
  }
}

TEST(CustomIQDialog, TableDefaultMapsAndClear) {
  CustomIQDialog dialog(pointsOnly({{0.5f, -0.25f}, {1.5f, 0}, {0, 0}}));
  EXPECT_EQ(dialog.windowTitle(), "Custom I/Q Modulation Editor");
  EXPECT_EQ(column(dialog, 0), QStringList({"0", "1", "2"}));
  EXPECT_EQ(column(dialog, 1), QStringList({"00", "01", "10"}));
  EXPECT_EQ(column(dialog, 2), QStringList({"0.500000", "1.500000", "0.000000"}));

  auto* box = dialog.findChild<MyComboBox*>();
  ASSERT_EQ(box->count(), 15);
  EXPECT_EQ(box->itemText(0) + box->itemData(0).toString(), "Load Default I/Q Map-1");
  EXPECT_EQ(box->itemText(14) + box->itemData(14).toString(), "2ASK14");
  for (int mod : {DigitalModQAM1024, DigitalModDQPSK, DigitalModOQPSK}) {
    box->setCurrentIndex(box->findData(mod));
    expectMap(dialog.modulationMap(), defaultModulationMap(mod));
    EXPECT_EQ(box->currentIndex(), 0);
    EXPECT_EQ(button(dialog, "Differential Encoding")->isChecked(), mod == DigitalModDQPSK);
    EXPECT_EQ(button(dialog, "Offset Q")->isChecked(), mod == DigitalModOQPSK);
    if (mod == DigitalModQAM1024) {
      EXPECT_EQ(table(dialog)->rowCount(), 1024);
      EXPECT_EQ(column(dialog, 1).at(1), "0000000001");
      EXPECT_EQ(column(dialog, 1).at(1023), "1111111111");
    }
  }
  button(dialog, "Clear Table")->click();
  expectMap(dialog.modulationMap(), defaultModulationMap(DigitalModQPSK));
}

// Typed values are limited to -1 .. 1; unreadable text keeps the value; loaded values stay.
TEST(CustomIQDialog, HandEntryAndRows) {
  CustomIQDialog dialog(ModulationMap{{{1.5f, 0.1f}, {0.25f, 0.5f}}, false, {0, 1}});
  button(dialog, "Add Symbol")->click();
  table(dialog)->item(1, 2)->setText("1.5");
  table(dialog)->item(1, 3)->setText("abc");
  table(dialog)->item(2, 3)->setText(" -7 ");
  EXPECT_EQ(dialog.modulationMap().states,
            std::vector<Sample>({{1.5f, 0.1f}, {1.0f, 0.5f}, {0.0f, -1.0f}}));
  EXPECT_EQ(column(dialog, 2).at(1), "1.000000");

  // Differential off keeps the offsets; Define replaces them on acceptance only.
  button(dialog, "Differential Encoding")->click();
  EXPECT_TRUE(dialog.modulationMap().differential);
  button(dialog, "Differential Encoding")->click();
  EXPECT_EQ(dialog.modulationMap().diffStates, Offsets({0, 1}));
  for (const char* last : {"Accept", "Remove Row"}) {
    QTimer::singleShot(0, [last] {
      auto* diff = qobject_cast<DiffEncodingDialog*>(QApplication::activeModalWidget());
      ASSERT_TRUE(diff);
      button(*diff, "Add Row")->click();
      button(*diff, "Add Row")->click();
      button(*diff, last)->click();
      if (diff->isVisible()) diff->reject();
    });
    button(dialog, "Define Differential Encoding")->click();
    EXPECT_EQ(dialog.modulationMap().diffStates, Offsets({0, 1, 1, 1})) << last;
  }
  for (int i = 0; i < 4; ++i) button(dialog, "Remove Symbol")->click();
  EXPECT_TRUE(dialog.modulationMap().states.empty());
}

TEST(DiffEncodingDialog, RowsAndHandEntry) {
  DiffEncodingDialog dialog({0, 1});
  EXPECT_EQ(dialog.windowTitle(), "Differential Encoding");
  button(dialog, "Add Row")->click();
  EXPECT_EQ(dialog.offsets(), Offsets({0, 1, 1}));
  table(dialog)->item(0, 2)->setText("5000");
  table(dialog)->item(1, 2)->setText("-99999999999");
  table(dialog)->item(2, 2)->setText("2.5");
  EXPECT_EQ(dialog.offsets(), Offsets({4096, -4096, 1}));
  EXPECT_EQ(column(dialog, 2), QStringList({"4096", "-4096", "1"}));
  for (int i = 0; i < 4; ++i) button(dialog, "Remove Row")->click();
  button(dialog, "Add Row")->click();
  EXPECT_EQ(dialog.offsets(), Offsets({0}));
}

TEST(ModulationFile, RoundTripsAndDropsOffsetsWhenNotDifferential) {
  QTemporaryDir dir;
  const QString path = dir.filePath("map.csv");
  ModulationMap map{{{0.70710677f, -1e-7f}, {-1.5f, 0}}, true, {0, -3}, true};
  CustomIQDialog dialog(map);
  ASSERT_TRUE(dialog.saveModulationFile(path));
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_EQ(file.readAll(),
            "Version,1\nStates,2\n0.70710677,-1e-07\n-1.5,0\nDifferential,true\n"
            "Diff States,2\n0\n-3\nOffsetQ,true\n");
  CustomIQDialog loaded(ModulationMap{});
  ASSERT_TRUE(loaded.loadModulationFile(path));
  expectMap(loaded.modulationMap(), map);
  EXPECT_TRUE(button(loaded, "Differential Encoding")->isChecked());

  map.differential = map.offsetQ = false;
  ASSERT_TRUE(writeModulationCsv(path, map));
  ASSERT_TRUE(loaded.loadModulationFile(path));
  map.diffStates.clear();
  expectMap(loaded.modulationMap(), map);
}

// A bad file is ignored: false, and the working map stays as it was.
TEST(ModulationFile, BadFilesChangeNothing) {
  const QByteArray good = "Version,1\nStates,2\n1,0\n-1,0\nDifferential,false\nOffsetQ,false\n";
  const int states = modulation_csv::maxStates, offsets = modulation_csv::maxOffsets;
  const QByteArray bad[] = {
      "",
      QByteArray(good).replace("Version,1", "Version,2"),
      QByteArray(good).replace("States,2", "States,3"),
      QByteArray(good).replace("States,2", "States,-1"),
      modulationFile(states + 1, false, 0),
      modulationFile(2, true, offsets + 1),
      good + QByteArray(modulation_csv::maxFileBytes, 'x'),
      QByteArray(good).replace("-1,0", "-1,x"),
      QByteArray(good).replace("-1,0", "-1,nan"),
      QByteArray(good).replace("1,0\n", "1\n"),
      QByteArray(good).replace("false\nOffsetQ", "yes\nOffsetQ"),
      QByteArray(good).replace("OffsetQ,false\n", ""),
      QByteArray(good).replace("false\nOffsetQ", "true\nDiff States,1\n0.5\nOffsetQ"),
  };
  QTemporaryDir dir;
  const QString path = dir.filePath("in.csv");
  const ModulationMap before = defaultModulationMap(DigitalModDQPSK);
  for (const QByteArray& content : bad) {
    writeFile(path, content);
    CustomIQDialog dialog(before);
    EXPECT_FALSE(dialog.loadModulationFile(path)) << content.left(80).constData();
    expectMap(dialog.modulationMap(), before);
    EXPECT_EQ(table(dialog)->rowCount(), 4);
  }
  for (const QString& name : {QString("missing.csv"), QString()})
    EXPECT_FALSE(CustomIQDialog(before).loadModulationFile(dir.filePath(name)));
  for (const QByteArray& content : {good, modulationFile(states, true, offsets)}) {
    writeFile(path, content);
    EXPECT_TRUE(CustomIQDialog(before).loadModulationFile(path));
  }
}

// Y upwards, 1.2 units from the centre to each side of the square, which is framed in black.
TEST(CustomIQPlot, PaintsThePointsInTheSquare) {
  const std::vector<Sample> points = {{1.0f, 0.0f}, {0.0f, 1.0f}};
  CustomIQPlot plot(&points);
  plot.resize(260, 220);  // square of side 200 from (30, 10); 83.3 pixels a unit
  const QImage image = plot.grab().toImage();
  const auto reddish = [&image](int x, int y) {
    const QColor c = image.pixelColor(x, y);
    return c.red() > 240 && c.green() < 64 && c.blue() < 64;
  };
  EXPECT_TRUE(reddish(130 + 83, 110));
  EXPECT_TRUE(reddish(130, 110 - 83));
  EXPECT_EQ(image.pixelColor(40, 20), QColor(Qt::white));
  EXPECT_EQ(image.pixelColor(30, 100), QColor(Qt::black));
}

}  // namespace
