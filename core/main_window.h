// SPDX-License-Identifier: MIT
// The application window: menus, connect and disconnect flow, dock and status bar.
#pragma once

#include "core/device.h"
#include "shell/version_checker.h"

#include <QMainWindow>

class ArbSequenceEditor;
class CentralWidget;
class ErrorLog;
class ImpairmentWidget;
class OFDMBuilderDialog;
class OutputMonitor;
class QAction;
class QDockWidget;
class QMenu;
class StatusBar;

class MainWindow : public QMainWindow {
  Q_OBJECT
public:
  explicit MainWindow(QWidget* parent = nullptr);
  ~MainWindow() override;

  CentralWidget* centralPanel() const { return central; }
  // A close was asked for, possibly before the window was first shown.
  bool closeRequested() const { return closeRequested_; }
  StatusBar* statusBarWidget() const { return statusBar; }
  OutputMonitor* outputMonitor() const { return monitor; }
  QDockWidget* outputMonitorDock() const { return monitorDock; }
  Device& session() { return device; }

public slots:
  void printClicked();
  void printApplication(bool withDialog);
  void saveAsImageClicked();
  void aboutToShowFileMenu();
  void populateConnectMenu();
  void aboutToShowPresetMenu();
  void connectDevice(QAction* a);
  void connectDevice(int serialNumber);
  void disconnectDevice();
  void deviceConnectionLost();
  void editPreferences();
  void updateStatusBarModeSlot(QString text);
  void updateTemp(QString text);
  void loadPreset(QAction* action);
  void savePreset(QAction* action);
  void selectPresetLoad();
  void selectPresetSave();
  void savePowerOnPreset();
  void deletePowerOnPreset();
  void showErrorList();
  void clearErrorList();
  void showArbSequenceEditor();
  void showOfdmBuilder();
  void openSoftwareManual();
  void openProductManual();
  void openWebsite();
  void openSupportForums();
  void showAboutDialog();
  void showNewVersionMessage();

protected:
  void closeEvent(QCloseEvent* event) override;

private:
  void buildDock();
  void buildMonitorDock();
  void buildMenus();
  void buildFileMenu();
  void buildPresetMenu();
  void buildUtilitiesMenu();
  void buildViewMenu();
  void buildHelpMenu();
  void connectFirstDevice();
  void afterConnect();
  void openDevice(int serialNumber);
  void saveWindowState();
  void restoreWindowState();
  void loadStyleSheet();

  Device device;
  CentralWidget* central = nullptr;
  QDockWidget* impairmentDock = nullptr;
  ImpairmentWidget* impairments = nullptr;
  QDockWidget* monitorDock = nullptr;
  OutputMonitor* monitor = nullptr;
  VersionChecker versionChecker;
  QMenu* fileMenu = nullptr;
  QMenu* connectMenu = nullptr;
  QMenu* presetMenu = nullptr;
  StatusBar* statusBar = nullptr;
  QAction* deletePowerOnAction = nullptr;
  ErrorLog* errorLog = nullptr;
  // Made at its first opening and kept, so its content lasts between openings.
  ArbSequenceEditor* sequenceEditor = nullptr;
  // Likewise kept, and not modal: the arb mode it plays into stays at hand.
  OFDMBuilderDialog* ofdmBuilder = nullptr;
  bool connecting = false;  // a device is being opened in a nested event loop
  bool closeRequested_ = false;
};
