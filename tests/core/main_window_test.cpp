// SPDX-License-Identifier: MIT
// The window's start-up outcomes, connect and disconnect, lost device and window state.
// Each Startup case runs in a process of its own with the devices its CTest entry names.
#include "core/main_window.h"

#include "arb/arb_mode/mode_view_arb.h"
#include "core/central_widget.h"
#include "core/ofdm_builder_dialog.h"
#include "core/output_monitor.h"
#include "core/status_bar.h"
#include "widgets/am_plot.h"
#include "core_test_env.h"
#include "krt/krt_api.h"
#include "scpi_client.h"
#include "persist/paths.h"
#include "support/events_log.h"

#include <QAction>
#include <QDockWidget>
#include <QImage>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QSettings>

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>

namespace {

QString deviceText(MainWindow& w) { return w.statusBarWidget()->deviceLabel->text(); }
QString serialText(MainWindow& w) { return w.statusBarWidget()->serialLabel->text(); }

QMenu* menu(MainWindow& w, const QString& title) {
  for (QAction* a : w.menuBar()->actions())
    if (a->text() == title) return a->menu();
  return nullptr;
}

TEST(Startup, NoDevice) {
  WarningRecorder recorder;
  MainWindow window;
  ASSERT_EQ(recorder.warnings.size(), 1u);
  EXPECT_EQ(recorder.warnings[0].title, "Tarnwick KRT40");
  EXPECT_EQ(recorder.warnings[0].text, "No Device Found.");
  EXPECT_FALSE(window.session().isOpen());
  EXPECT_FALSE(window.centralPanel()->isEnabled());
  EXPECT_EQ(deviceText(window), "   No Device Connected   ");

  QMenu* connectMenu = menu(window, "File")->findChild<QMenu*>();
  window.populateConnectMenu();
  ASSERT_EQ(connectMenu->actions().size(), 1);
  EXPECT_EQ(connectMenu->actions()[0]->text(), "No Devices Found");
  EXPECT_FALSE(connectMenu->actions()[0]->isEnabled());
}

TEST(Startup, OneDevice) {
  WarningRecorder recorder;
  MainWindow window;
  EXPECT_TRUE(recorder.warnings.empty());
  EXPECT_TRUE(window.session().isOpen());
  EXPECT_TRUE(window.centralPanel()->isEnabled());
  EXPECT_TRUE(window.centralPanel()->isStreaming());
  EXPECT_EQ(deviceText(window), "   KRT40A   ");
  EXPECT_EQ(serialText(window), "   S/N - 21000001   F/W - 3   ");
}

TEST(Startup, SeveralDevices) {
  WarningRecorder recorder;
  MainWindow window;
  ASSERT_EQ(recorder.warnings.size(), 1u);
  EXPECT_EQ(recorder.warnings[0].text,
            "More than one device found.\nUse the File->Connect menu to connect a device.");
  EXPECT_FALSE(window.session().isOpen());

  QMenu* connectMenu = menu(window, "File")->findChild<QMenu*>();
  window.populateConnectMenu();
  ASSERT_EQ(connectMenu->actions().size(), 2);
  EXPECT_EQ(connectMenu->actions()[1]->text(), "KRT40: 21000002");
  window.connectDevice(connectMenu->actions()[1]);
  EXPECT_EQ(recorder.warnings.size(), 1u);
  EXPECT_EQ(serialText(window), "   S/N - 21000002   F/W - 3   ");
  window.aboutToShowFileMenu();
  EXPECT_FALSE(connectMenu->isEnabled()) << "one device at a time";
}

TEST(Startup, OpenFails) {
  // The only device is already open elsewhere, so the window's open is refused.
  int handle = -1;
  ASSERT_EQ(krtOpenDeviceBySerial(&handle, 21000001), 0);
  WarningRecorder recorder;
  {
    MainWindow window;
    ASSERT_EQ(recorder.warnings.size(), 1u);
    EXPECT_EQ(recorder.warnings[0].text, "Unable to open device.");
    EXPECT_FALSE(window.centralPanel()->isEnabled());
  }
  krtCloseDevice(handle);
}

TEST(Window, LostDeviceClosesAndTellsTheUser) {
  std::remove(unplugPath().c_str());
  WarningRecorder recorder;
  MainWindow window;
  window.centralPanel()->setRFEnabled(true);
  EventsLog log(eventsPath());
  ASSERT_TRUE(waitUntil([&] { return !log.calls("krtSubmitIQ").empty(); }));
  std::ofstream(unplugPath()) << "unplugged";
  ASSERT_TRUE(waitUntil([&] { return !recorder.warnings.empty(); }));
  EXPECT_EQ(recorder.warnings[0].title, "Error");
  EXPECT_EQ(recorder.warnings[0].text, "Device Connection Lost");
  EXPECT_FALSE(window.session().isOpen());
  EXPECT_FALSE(window.centralPanel()->isEnabled());
  EXPECT_EQ(deviceText(window), "   No Device Connected   ");
  std::remove(unplugPath().c_str());
}

TEST(Window, DisconnectStopsTheThreadBeforeClosing) {
  WarningRecorder recorder;
  MainWindow window;
  window.centralPanel()->setRFEnabled(true);
  EventsLog log(eventsPath());
  ASSERT_TRUE(waitUntil([&] { return !log.calls("krtSubmitIQ").empty(); }));
  log.mark();
  window.disconnectDevice();
  EXPECT_FALSE(window.centralPanel()->isStreaming());
  const auto seq = log.sequence({"krtGetUSBStatus", "krtSubmitIQ"});
  ASSERT_GE(seq.size(), 2u);
  EXPECT_EQ(seq[seq.size() - 2], "krtAbort");
  EXPECT_EQ(seq.back(), "krtCloseDevice");
  window.disconnectDevice();  // twice is harmless
  EXPECT_EQ(serialText(window), "");
}

TEST(Window, StateSurvivesARestart) {
  WarningRecorder recorder;
  const QRect placed(40, 50, 1000, 720);
  {
    MainWindow window;
    window.show();
    window.setGeometry(placed);
    EXPECT_FALSE(window.outputMonitorDock()->isVisible()) << "hidden until asked for";
    window.outputMonitorDock()->show();
    window.close();
  }
  QSettings settings(preferencesPath(), QSettings::IniFormat);
  EXPECT_TRUE(settings.value("MainWindow/State").isValid());
  EXPECT_FALSE(settings.value("MainWindow/Maximized").toBool());
  MainWindow again;
  EXPECT_EQ(again.geometry().size(), placed.size());
  EXPECT_FALSE(again.outputMonitorDock()->isHidden()) << "the monitor's dock is part of the state";
}

TEST(Window, MenusHoldEveryEntry) {
  WarningRecorder recorder;
  MainWindow window;
  QStringList titles;
  for (QAction* a : window.menuBar()->actions()) titles << a->text();
  EXPECT_EQ(titles, (QStringList{"File", "Edit", "Presets", "Utilites", "View", "Help"}));
  ASSERT_EQ(menu(window, "View")->actions().size(), 1);
  EXPECT_EQ(menu(window, "View")->actions()[0]->text(), "Output Monitor");
  EXPECT_TRUE(menu(window, "View")->actions()[0]->isCheckable());
  QStringList presets;
  for (QAction* a : menu(window, "Presets")->actions()) presets << a->text();
  EXPECT_EQ(presets,
            (QStringList{"Load User Preset", "Save User Preset", "", "Quick Load", "Quick Save", "",
                         "Save Power On Preset", "Delete Power On Preset"}));
  QMenu* quickLoad = menu(window, "Presets")->actions()[3]->menu();
  ASSERT_EQ(quickLoad->actions().size(), 9);
  EXPECT_EQ(quickLoad->actions()[8]->shortcut(), QKeySequence("Ctrl+9"));
  EXPECT_EQ(quickLoad->actions()[8]->data().toInt(), 9);
}

TEST(Window, PowerOnPresetAtEachConnect) {
  WarningRecorder recorder;
  MainWindow window;
  CentralWidget* central = window.centralPanel();
  central->setCenterFrequency(2.2e9);
  window.savePowerOnPreset();
  window.aboutToShowPresetMenu();
  EXPECT_TRUE(menu(window, "Presets")->actions().back()->isEnabled());

  window.disconnectDevice();
  central->setCenterFrequency(1e9);
  window.connectDevice(21000001);
  EXPECT_DOUBLE_EQ(central->frequency(), 2.2e9);

  window.deletePowerOnPreset();
  window.aboutToShowPresetMenu();
  EXPECT_FALSE(menu(window, "Presets")->actions().back()->isEnabled());
  EXPECT_TRUE(recorder.warnings.empty());
}

}  // namespace

// The OFDM builder is reached from "Utilites"; "Play in Arb Mode" hands the waveform to the arb
// mode at fftSize x spacing and makes it the playing mode.
TEST(Window, OfdmBuilderPlaysInArb) {
  WarningRecorder recorder;
  MainWindow window;
  QAction* entry = nullptr;
  for (QAction* a : menu(window, "Utilites")->actions())
    if (a->text() == "OFDM Waveform Builder") entry = a;
  ASSERT_TRUE(entry);
  entry->trigger();
  auto* builder = window.findChild<OFDMBuilderDialog*>();
  ASSERT_TRUE(builder);
  EXPECT_TRUE(builder->isVisible());
  EXPECT_EQ(builder->windowTitle(), "OFDM Waveform Builder");
  for (QPushButton* b : builder->findChildren<QPushButton*>())
    if (b->text() == "Play in Arb Mode") b->click();
  CentralWidget* central = window.centralPanel();
  EXPECT_EQ(central->currentMode(), 13);
  ModeViewArb* arb = nullptr;
  for (ModeWidget* view : central->views())
    if (view->modeIndex() == 13) arb = qobject_cast<ModeViewArb*>(view);
  ASSERT_TRUE(arb);
  const ArbInfo info = arb->getArbInfo();
  EXPECT_TRUE(info.loaded);
  EXPECT_EQ(info.fileLength, 16 * 80);
  EXPECT_EQ(info.sampleRate, 5e6);
  entry->trigger();  // the same builder again
  EXPECT_EQ(window.findChildren<OFDMBuilderDialog*>().size(), 1);
}

// Blue pixels (the series' colour) in a rectangle of an image.
int bluePixels(const QImage& image, const QRect& area) {
  int count = 0;
  for (int y = area.top(); y <= area.bottom(); ++y)
    for (int x = area.left(); x <= area.right(); ++x) {
      const QColor c = image.pixelColor(x, y);
      count += c.blue() > 200 && c.red() < 80 && c.green() < 80;
    }
  return count;
}

// The dock opened from the View menu while a multitone plays: each plot draws its data, the
// figures can be saved, and hiding the dock stops the copies.
TEST(Window, OutputMonitorShowsThePlots) {
  WarningRecorder recorder;
  MainWindow window;
  window.show();
  CentralWidget* central = window.centralPanel();
  central->setRFEnabled(true);
  central->setModEnabled(true);
  {
    ScpiClient client(central->scpiServerPort());
    client.command(":MTON:FSP 100 kHz;:MTON:NTON 64;:MTON:PHAS RAND;:MTON ON");
  }
  menu(window, "View")->actions()[0]->trigger();
  OutputMonitor* monitor = window.outputMonitor();
  ASSERT_TRUE(monitor->isVisible());
  ASSERT_TRUE(waitUntil([&] { return monitor->ccdf().count() >= 3 * 65536; }));
  QTest::qWait(100);
  const QImage shot = monitor->grab().toImage();
  if (const char* path = getenv("KRT40_MONITOR_SHOT")) shot.save(path);
  for (AMPlot* plot : monitor->findChildren<AMPlot*>()) {
    const QRect area(plot->mapTo(monitor, QPoint(0, 0)), plot->size());
    EXPECT_GT(bluePixels(shot, area), 40) << plot->title.toStdString();
  }
  const QString csv = QString::fromStdString(coreScratchDir()) + "/monitor.csv";
  ASSERT_TRUE(monitor->saveCsv(csv));
  QFile file(csv);
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  const QStringList lines = QString::fromUtf8(file.readAll()).split('\n');
  EXPECT_EQ(lines.filter(QRegularExpression("^[0-9.e+-]+,-?[0-9.e+-]+$")).size() > 4096, true);
  EXPECT_TRUE(lines.contains("Frequency (Hz),Level (dBFS)"));
  EXPECT_TRUE(lines.contains("Above Mean Power (dB),Samples Above (%)"));

  menu(window, "View")->actions()[0]->trigger();
  EXPECT_FALSE(window.session().outputTap().enabled());
  EXPECT_TRUE(recorder.warnings.empty());
}
