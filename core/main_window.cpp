// SPDX-License-Identifier: MIT
// The application window: construction, connect flow, window state and simple menu actions.
#include "core/main_window.h"

#include "core/central_widget.h"
#include "core/impairment_widget.h"
#include "core/output_monitor.h"
#include "core/status_bar.h"
#include "persist/paths.h"
#include "persist/settings_file.h"
#include "shell/error_log.h"
#include "shell/message_box.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDockWidget>
#include <QEventLoop>
#include <QFile>
#include <QLabel>
#include <QProgressDialog>
#include <QScrollArea>
#include <QSettings>

#include <thread>

namespace {

const char* appTitle = "Tarnwick KRT40";

}  // namespace

MainWindow::MainWindow(QWidget* parent) : QMainWindow(parent) {
  Q_INIT_RESOURCE(resources);
  setWindowTitle("Tarnwick KRT40 Vector Signal Generator");
  resize(1280, 960);

  errorLog = new ErrorLog(this);
  impairments = new ImpairmentWidget();
  device.setImpairments(impairments);
  buildDock();
  buildMonitorDock();
  buildMenus();

  central = new CentralWidget(&device, impairments, this);
  setCentralWidget(central);
  statusBar = new StatusBar(this);
  setStatusBar(statusBar);

  connect(central, &CentralWidget::updateStatusBarModeSignal, this,
          &MainWindow::updateStatusBarModeSlot);
  connect(central, &CentralWidget::updateTemp, this, &MainWindow::updateTemp);
  connect(central, &CentralWidget::connectDeviceRequested, this,
          qOverload<int>(&MainWindow::connectDevice), Qt::DirectConnection);
  connect(central, &CentralWidget::disconnectDeviceRequested, this, &MainWindow::disconnectDevice,
          Qt::DirectConnection);
  connect(central, &CentralWidget::closeWindowRequested, this, &QWidget::close,
          Qt::QueuedConnection);
  connect(&versionChecker, &VersionChecker::broadcastNewVersionAvailable, this,
          &MainWindow::showNewVersionMessage);
  versionChecker.start();

  loadStyleSheet();
  restoreWindowState();
  connectFirstDevice();
}

MainWindow::~MainWindow() {
  central->stopStreaming();
  // After closeEvent the handle is already -1; the library refuses it harmlessly.
  device.abort();
  // The monitor reads the device's tap, and children outlive the members: it goes first.
  delete monitorDock;
}

void MainWindow::buildDock() {
  impairmentDock = new QDockWidget("Signal Impairments", this);
  impairmentDock->setObjectName("ImpairmentDock");
  connect(impairmentDock, &QDockWidget::dockLocationChanged, impairments,
          &ImpairmentWidget::dockLocationChanged);
  auto* scroll = new QScrollArea;
  scroll->setWidgetResizable(true);
  scroll->setWidget(impairments);
  impairmentDock->setWidget(scroll);
  impairmentDock->setAllowedAreas(Qt::TopDockWidgetArea | Qt::BottomDockWidgetArea);
  addDockWidget(Qt::BottomDockWidgetArea, impairmentDock);
}

// Hidden until asked for from the View menu: while hidden the output is not copied for it.
// It first floats beside the panel rather than squeezing it; docked or not, where it was is
// kept with the window's state.
void MainWindow::buildMonitorDock() {
  monitorDock = new QDockWidget("Output Monitor", this);
  monitorDock->setObjectName("OutputMonitorDock");
  monitor = new OutputMonitor(&device);
  monitorDock->setWidget(monitor);
  addDockWidget(Qt::BottomDockWidgetArea, monitorDock);
  monitorDock->setFloating(true);
  monitorDock->resize(1100, 460);
  monitorDock->hide();
}

void MainWindow::loadStyleSheet() {
  QFile file(":/resources/style_sheet.css");
  if (!file.open(QIODevice::ReadOnly)) return;  // a missing sheet is passed over
  qApp->setStyleSheet(QString::fromUtf8(file.readAll()));
}

// ---- Connect and disconnect ---------------------------------------------------------------

void MainWindow::connectFirstDevice() {
  // Without a device the panel and the impairments stay disabled; a connect enables them.
  central->setEnabled(false);
  impairments->setEnabled(false);
  const std::vector<int> serials = device.deviceList();
  if (serials.empty()) {
    showWarning(this, appTitle, "No Device Found.");
  } else if (serials.size() == 1) {
    connectDevice(serials.front());
    if (!device.isOpen() && !closeRequested_) showWarning(this, appTitle, "Unable to open device.");
  } else {
    showWarning(this, appTitle,
                "More than one device found.\nUse the File->Connect menu to connect a device.");
  }
}

void MainWindow::connectDevice(QAction* a) {
  connectDevice(a->data().toInt());
  if (!device.isOpen() && !closeRequested_) showWarning(this, appTitle, "Unable to open device.");
}

void MainWindow::connectDevice(int serialNumber) {
  if (device.isOpen() || connecting || closeRequested_) return;
  QProgressDialog dialog(this);
  dialog.setWindowTitle("KRT40");
  dialog.setLabelText(QString(20, ' ') +
                      "Attempting to Connect KRT, This May Take Several Seconds" +
                      QString(20, ' '));
  dialog.show();
  dialog.setMinimum(0);
  dialog.setMaximum(0);  // a busy bar
  connecting = true;
  openDevice(serialNumber);
  connecting = false;
  // A close asked for while the device opened (":SYST:CLOS" from a client) wins.
  if (closeRequested_) {
    device.close();
    return;
  }
  afterConnect();
}

// Opening takes seconds: it runs on a short thread while the window stays alive in a local
// event loop. The quit is posted to the loop, so an open that returns before exec still ends
// it; a loop that the application's quit has ended already is simply joined.
void MainWindow::openDevice(int serialNumber) {
  QEventLoop loop;
  std::thread opener([&] {
    device.open(serialNumber);
    QMetaObject::invokeMethod(&loop, "quit", Qt::QueuedConnection);
  });
  loop.exec();
  opener.join();
}

void MainWindow::afterConnect() {
  const bool open = device.isOpen();
  central->setEnabled(open);
  impairments->setEnabled(open);
  if (!open) {
    statusBar->setDeviceText("No Device Connected");
    statusBar->serialLabel->clear();
    statusBar->temperatureLabel->clear();
    return;
  }
  central->startStreamingQuiet();
  statusBar->setDeviceText(QString::fromStdString(device.modelName()));
  statusBar->setSerialText("S/N - " + QString::fromStdString(device.serialNumberText()) + "   " +
                           "F/W - " + QString::fromStdString(device.firmwareText()));
  central->loadPowerOnPreset();
}

void MainWindow::disconnectDevice() {
  central->stopStreaming();
  device.close();
  central->setEnabled(false);
  impairments->setEnabled(false);
  statusBar->setDeviceText("No Device Connected");
  statusBar->serialLabel->clear();
}

void MainWindow::deviceConnectionLost() {
  disconnectDevice();
  showWarning(this, "Error", "Device Connection Lost");
}

// ---- Window state -------------------------------------------------------------------------

void MainWindow::saveWindowState() {
  if (!settingsFileWritable(preferencesPath())) return;
  QSettings settings(preferencesPath(), QSettings::IniFormat);
  settings.setValue("MainWindow/State", saveState());
  settings.setValue("MainWindow/Geometry", geometry());
  settings.setValue("MainWindow/Maximized", isMaximized());
}

void MainWindow::restoreWindowState() {
  if (!settingsFileReadable(preferencesPath())) return;
  QSettings settings(preferencesPath(), QSettings::IniFormat);
  const QVariant state = settings.value("MainWindow/State");
  if (state.isValid()) restoreState(state.toByteArray());
  const QVariant geometryValue = settings.value("MainWindow/Geometry");
  if (geometryValue.isValid() && geometryValue.toRect().isValid())
    setGeometry(geometryValue.toRect());
  const QVariant maximized = settings.value("MainWindow/Maximized");
  if (maximized.isValid() && maximized.toBool()) showMaximized();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  closeRequested_ = true;
  // During a connect the opening thread owns the device; the connect closes it when it ends.
  if (!connecting) disconnectDevice();
  saveWindowState();
  QMainWindow::closeEvent(event);
}

// ---- Status bar ---------------------------------------------------------------------------

void MainWindow::updateStatusBarModeSlot(QString text) { statusBar->setModeText(text); }

void MainWindow::updateTemp(QString text) { statusBar->setTemperatureText(text); }

void MainWindow::showNewVersionMessage() {
  statusBar->versionLabel->setOpenExternalLinks(true);
  statusBar->setVersionText(QString("<a href=\"%1\"><span style=\"color:white;\">"
                                    "New Software Version Available  </span></a>")
                                .arg(KRT40_DOWNLOAD_URL));
}
