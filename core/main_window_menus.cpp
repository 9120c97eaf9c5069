// SPDX-License-Identifier: MIT
// The main window's menus and the actions behind them.
#include "core/main_window.h"

#include "arb/sequence_editor/arb_sequence_editor.h"
#include "core/central_widget.h"
#include "core/impairment_widget.h"
#include "core/ofdm_builder_dialog.h"
#include "persist/paths.h"
#include "shell/about_dialog.h"
#include "shell/error_log.h"
#include "shell/error_queue.h"
#include "shell/file_dialogs.h"
#include "shell/preferences_editor.h"

#include <QDesktopServices>
#include <QDockWidget>
#include <QFile>
#include <QMenuBar>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QUrl>

void MainWindow::buildMenus() {
  buildFileMenu();
  QMenu* editMenu = menuBar()->addMenu("Edit");
  editMenu->addAction("Preferences", this, &MainWindow::editPreferences);
  buildPresetMenu();
  buildUtilitiesMenu();
  buildViewMenu();
  buildHelpMenu();
}

void MainWindow::buildFileMenu() {
  fileMenu = menuBar()->addMenu("File");
  fileMenu->addAction("Print", this, &MainWindow::printClicked, QKeySequence("Ctrl+P"));
  fileMenu->addAction("Save as Image", this, &MainWindow::saveAsImageClicked);
  fileMenu->addSeparator();
  connectMenu = fileMenu->addMenu("Connect");
  connect(connectMenu, &QMenu::aboutToShow, this, &MainWindow::populateConnectMenu);
  connect(connectMenu, &QMenu::triggered, this, qOverload<QAction*>(&MainWindow::connectDevice));
  fileMenu->addAction("Disconnect Device", this, &MainWindow::disconnectDevice);
  fileMenu->addSeparator();
  fileMenu->addAction("Exit", this, &QWidget::close, QKeySequence("Ctrl+q"));
  connect(fileMenu, &QMenu::aboutToShow, this, &MainWindow::aboutToShowFileMenu);
}

void MainWindow::buildPresetMenu() {
  presetMenu = menuBar()->addMenu("Presets");
  presetMenu->addAction("Load User Preset", this, &MainWindow::selectPresetLoad,
                        QKeySequence("Ctrl+O"));
  presetMenu->addAction("Save User Preset", this, &MainWindow::selectPresetSave,
                        QKeySequence("Ctrl+S"));
  presetMenu->addSeparator();
  QMenu* quickLoad = presetMenu->addMenu("Quick Load");
  QMenu* quickSave = presetMenu->addMenu("Quick Save");
  for (int n = 1; n <= 9; ++n) {
    QAction* load = quickLoad->addAction(QString("Preset %1").arg(n));
    load->setData(n);
    load->setShortcut(QKeySequence(QString("Ctrl+%1").arg(n)));
    quickSave->addAction(QString("Preset %1").arg(n))->setData(n);
  }
  connect(quickLoad, &QMenu::triggered, this, &MainWindow::loadPreset);
  connect(quickSave, &QMenu::triggered, this, &MainWindow::savePreset);
  presetMenu->addSeparator();
  presetMenu->addAction("Save Power On Preset", this, &MainWindow::savePowerOnPreset);
  deletePowerOnAction =
      presetMenu->addAction("Delete Power On Preset", this, &MainWindow::deletePowerOnPreset);
  connect(presetMenu, &QMenu::aboutToShow, this, &MainWindow::aboutToShowPresetMenu);
}

void MainWindow::buildUtilitiesMenu() {
  QMenu* utilities = menuBar()->addMenu("Utilites");
  utilities->addAction("Show Error Log", this, &MainWindow::showErrorList);
  utilities->addAction("Clear Error Log", this, &MainWindow::clearErrorList);
  utilities->addSeparator();
  utilities->addAction(impairmentDock->toggleViewAction());
  utilities->addSeparator();
  utilities->addAction("Arb Sequence Editor", this, &MainWindow::showArbSequenceEditor);
  utilities->addAction("OFDM Waveform Builder", this, &MainWindow::showOfdmBuilder);
}

void MainWindow::buildViewMenu() {
  QMenu* view = menuBar()->addMenu("View");
  view->addAction(monitorDock->toggleViewAction());
}

void MainWindow::buildHelpMenu() {
  QMenu* help = menuBar()->addMenu("Help");
  help->addAction("Software User Manual", this, &MainWindow::openSoftwareManual);
  help->addAction("Product Manual", this, &MainWindow::openProductManual);
  help->addSeparator();
  help->addAction("Tarnwick Website", this, &MainWindow::openWebsite);
  help->addAction("Support Forums", this, &MainWindow::openSupportForums);
  help->addSeparator();
  help->addAction("About", this, &MainWindow::showAboutDialog);
}

void MainWindow::aboutToShowFileMenu() {
  for (QAction* action : fileMenu->actions())
    if (action->text() == "Disconnect Device") action->setEnabled(device.isOpen());
  connectMenu->setEnabled(!device.isOpen());
}

void MainWindow::populateConnectMenu() {
  connectMenu->clear();
  const std::vector<int> serials = device.deviceList();
  if (serials.empty()) {
    connectMenu->addAction("No Devices Found")->setEnabled(false);
    return;
  }
  for (int serial : serials)
    connectMenu->addAction(QString("KRT40: %1").arg(serial))->setData(serial);
}

void MainWindow::aboutToShowPresetMenu() {
  for (QAction* action : presetMenu->actions()) action->setEnabled(device.isOpen());
  deletePowerOnAction->setEnabled(QFile::exists(powerOnPresetPath()));
}

// ---- File ---------------------------------------------------------------------------------

void MainWindow::printClicked() { printApplication(true); }

void MainWindow::printApplication(bool withDialog) {
  QPrinter printer(QPrinter::ScreenResolution);
  printer.setPageOrientation(QPageLayout::Landscape);
  if (withDialog) {
    QPrintDialog dialog(&printer, this);
    if (dialog.exec() != QDialog::Accepted) return;
  }
  const QImage image = grab().toImage();
  QPainter painter(&printer);
  const QRect viewport = painter.viewport();
  QSize size = image.size();
  size.scale(viewport.size(), Qt::KeepAspectRatio);
  painter.setViewport(viewport.x(), viewport.y(), size.width() - 5, size.height() - 5);
  painter.setWindow(image.rect());
  painter.drawImage(2, 2, image);
}

void MainWindow::saveAsImageClicked() {
  const QString name = saveFileName("Image Save Name", "Images (*.png *.jpg *.bmp)", this);
  if (name.isEmpty()) return;
  grab().toImage().save(name);
}

void MainWindow::editPreferences() {
  PreferencesEditor editor(this);
  editor.exec();
  central->restartScpiServerIfIdle();
}

// ---- Presets --------------------------------------------------------------------------------

void MainWindow::loadPreset(QAction* action) { central->loadQuickPreset(action->data().toInt()); }

void MainWindow::savePreset(QAction* action) { central->saveQuickPreset(action->data().toInt()); }

void MainWindow::selectPresetLoad() {
  const QString name = openFileName("Load User Preset", "Preset File (*.ini)", this);
  if (!name.isEmpty()) central->loadPreset(name);
}

void MainWindow::selectPresetSave() {
  const QString name = saveFileName("Save User Preset", "Preset File (*.ini)", this);
  if (!name.isEmpty()) central->savePreset(name);
}

void MainWindow::savePowerOnPreset() { central->savePowerOnPreset(); }

void MainWindow::deletePowerOnPreset() { central->deletePowerOnPreset(); }

// ---- Utilities ----------------------------------------------------------------------------

void MainWindow::showErrorList() {
  errorLog->show();
  errorLog->raise();
}

void MainWindow::clearErrorList() { errorLogClear(); }

void MainWindow::showArbSequenceEditor() {
  if (!sequenceEditor) sequenceEditor = new ArbSequenceEditor(this);
  sequenceEditor->exec();
}

void MainWindow::showOfdmBuilder() {
  if (!ofdmBuilder) ofdmBuilder = new OFDMBuilderDialog(central, this);
  ofdmBuilder->show();
  ofdmBuilder->raise();
}

// ---- Help ---------------------------------------------------------------------------------

void MainWindow::openSoftwareManual() {
  QDesktopServices::openUrl(QUrl("file:./manuals/KRT40-Software-Manual.pdf"));
}

void MainWindow::openProductManual() {
  QDesktopServices::openUrl(QUrl("file:./manuals/KRT40A-Product-Manual.pdf"));
}

void MainWindow::openWebsite() { QDesktopServices::openUrl(QUrl(KRT40_WEBSITE_URL)); }

void MainWindow::openSupportForums() { QDesktopServices::openUrl(QUrl(KRT40_FORUM_URL)); }

void MainWindow::showAboutDialog() {
  AboutDialog dialog(versionChecker, this);
  dialog.exec();
}
