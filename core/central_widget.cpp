// SPDX-License-Identifier: MIT
// The front panel and the restart path.
#include "core/central_widget.h"

#include "core/device.h"
#include "core/impairment_widget.h"
#include "modes/mode_widget.h"
#include "modes/my_stacked_widget.h"
#include "shell/error_queue.h"
#include "widgets/double_edit.h"
#include "widgets/frequency_edit.h"
#include "widgets/my_button_group.h"
#include "widgets/my_list_widget.h"
#include "widgets/q_square_button.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidgetItem>
#include <QPainter>
#include <QProgressDialog>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr double minFrequency = 30e6;
constexpr double maxFrequency = 6e9;
constexpr double minLevel = -120.0;
constexpr double maxLevel = 10.0;
constexpr double maxLevelStep = 100.0;
constexpr int modeIndexRole = 256;

}  // namespace

CentralWidget::CentralWidget(Device* device, ImpairmentWidget* impairments, QWidget* parent,
                             Qt::WindowFlags flags,
                             const std::function<void(ModeRegistry&)>& registerUnits)
    : QWidget(parent, flags), device(device), impairments(impairments), engine(device, &opcGate) {
  engine.setImpairments(impairments);
  engine.setConnectionLostHandler([this] { emit deviceConnectionLost(); });

  buildFrontPanel();
  connectFrontPanel();
  buildModeList();
  layOutPanel();
  // Index 0 is the plain carrier, played until the first mode is enabled.
  modeUnits.setGenerator(0, [this](ModeHost&) { generateCW(); });
  registerUnits(modeUnits);
  for (ModeWidget* view : modeUnits.views()) addMode(view);

  QPalette pal = palette();
  pal.setColor(QPalette::Window, Qt::white);
  setPalette(pal);
  setAutoFillBackground(true);

  for (ModeWidget* view : modeViews) view->setDefaults();
  connect(impairments, &ImpairmentWidget::impairmentsChanged, this,
          &CentralWidget::settingsChanged);
  connect(this, &CentralWidget::showProgressDialogSignal, this,
          &CentralWidget::showProgressDialogSlot);
  connect(this, &CentralWidget::setProgressPercentSignal, this,
          &CentralWidget::setProgressPercentSlot);
  connect(this, &CentralWidget::hideProgressDialogSignal, this,
          &CentralWidget::hideProgressDialogSlot);
  setUpRemote();
  if (parent) connect(this, SIGNAL(deviceConnectionLost()), parent, SLOT(deviceConnectionLost()));
}

CentralWidget::~CentralWidget() {
  stopScpiServer();
  stopStreaming();
}

void CentralWidget::buildFrontPanel() {
  frequencyLabel = new QLabel("  Freq  ", this);
  stepLabel = new QLabel("  Step  ", this);
  frequencyEdit = new FrequencyEdit(1e9, this);
  frequencyEdit->setStep(1e6);
  frequencyEdit->setArrowKeys(true);
  frequencyStepEdit = new FrequencyEdit(1e6, this);
  frequencyUpButton = new QSquareButton(this);
  frequencyUpButton->setIcon(QIcon(":resources/arrow_up.png"));
  frequencyDownButton = new QSquareButton(this);
  frequencyDownButton->setIcon(QIcon(":resources/arrow_down.png"));

  levelLabel = new QLabel("  Level (dBm)  ", this);
  levelStepLabel = new QLabel("  Step (dB)  ", this);
  levelEdit = new DoubleEdit(minLevel, maxLevel, 2, -20.0, this);
  levelEdit->setStep(10.0);
  levelEdit->setArrowKeys(true);
  levelStepEdit = new DoubleEdit(0.0, maxLevelStep, 2, 10.0, this);
  levelStepEdit->setStep(1.0);
  levelStepEdit->setArrowKeys(true);
  levelUpButton = new QSquareButton(this);
  levelUpButton->setIcon(QIcon(":resources/arrow_up.png"));
  levelDownButton = new QSquareButton(this);
  levelDownButton->setIcon(QIcon(":resources/arrow_down.png"));

  rfButtons = new MyButtonGroup("RF On", "RF Off", this);
  modButtons = new MyButtonGroup("Mod On", "Mod Off", this);
  referenceButton = new QPushButton("Ext Ref", this);
  referenceButton->setCheckable(true);
  triggerButton = new QPushButton("Trigger", this);
  presetButton = new QPushButton("Preset", this);
  presetButton->setObjectName("TKPresetButton");
  recalButton = new QPushButton("Recal", this);
}

void CentralWidget::connectFrontPanel() {
  connect(frequencyEdit, &FrequencyEdit::valueChanged, this, &CentralWidget::setCenterFrequency);
  connect(frequencyStepEdit, &FrequencyEdit::valueChanged, this, &CentralWidget::setStepFrequency);
  connect(frequencyUpButton, &QPushButton::clicked, this, &CentralWidget::increaseCenterFrequency);
  connect(frequencyDownButton, &QPushButton::clicked, this,
          &CentralWidget::decreaseCenterFrequency);
  connect(rfButtons, &MyButtonGroup::stateChanged, this, &CentralWidget::settingsChanged);
  connect(modButtons, &MyButtonGroup::stateChanged, this, &CentralWidget::settingsChanged);
  connect(triggerButton, &QPushButton::clicked, this, &CentralWidget::triggerPressed);
  // Both are connected, so one click restarts the output twice.
  connect(referenceButton, &QPushButton::clicked, this, &CentralWidget::referenceKeyPressed);
  connect(referenceButton, &QPushButton::clicked, this, &CentralWidget::settingsChanged);
  connect(levelEdit, &DoubleEdit::editUpdated, this, &CentralWidget::setLevel);
  connect(levelStepEdit, &DoubleEdit::editUpdated, this, &CentralWidget::setLevelStep);
  connect(levelUpButton, &QPushButton::clicked, this, &CentralWidget::increaseLevel);
  connect(levelDownButton, &QPushButton::clicked, this, &CentralWidget::decreaseLevel);
  connect(presetButton, &QPushButton::clicked, this, &CentralWidget::presetButtonPressed);
  connect(recalButton, &QPushButton::clicked, this, &CentralWidget::settingsChanged);
}

void CentralWidget::buildModeList() {
  modeList = new MyListWidget(this);
  auto* header = new QListWidgetItem(modeList);
  header->setFlags(Qt::NoItemFlags);
  auto* headerLabel = new QLabel("Modulation", modeList);
  headerLabel->setObjectName("ListWidgetLabel");
  modeList->setItemWidget(header, headerLabel);

  modeGroup = new QButtonGroup(this);
  modeGroup->setExclusive(true);
  modeStack = new MyStackedWidget(this);
  modeScrollArea = new QScrollArea(this);
  modeScrollArea->setWidgetResizable(true);
  modeScrollArea->setWidget(modeStack);

  connect(modeList, &QListWidget::itemPressed, this, &CentralWidget::modeSelectChanged);
  connect(modeGroup, &QButtonGroup::idClicked, this, &CentralWidget::modeChanged);
  connect(modeGroup, &QButtonGroup::idClicked, modeList, &MyListWidget::setActiveModeColored);
}

void CentralWidget::layOutPanel() {
  frontPanelGrid = new QGridLayout;
  frontPanelGrid->setSpacing(2);
  frontPanelGrid->addWidget(frequencyLabel, 0, 0);
  frontPanelGrid->addWidget(stepLabel, 1, 0);
  frontPanelGrid->addWidget(frequencyEdit, 0, 1);
  frontPanelGrid->addWidget(frequencyStepEdit, 1, 1);
  frontPanelGrid->addWidget(frequencyUpButton, 0, 2);
  frontPanelGrid->addWidget(frequencyDownButton, 1, 2);
  frontPanelGrid->addWidget(rfButtons, 0, 3, 2, 1);
  frontPanelGrid->addWidget(modButtons, 0, 4, 2, 1);
  frontPanelGrid->addWidget(triggerButton, 0, 5);
  frontPanelGrid->addWidget(referenceButton, 1, 5);
  frontPanelGrid->addWidget(levelLabel, 0, 6);
  frontPanelGrid->addWidget(levelStepLabel, 1, 6);
  frontPanelGrid->addWidget(levelEdit, 0, 7);
  frontPanelGrid->addWidget(levelStepEdit, 1, 7);
  frontPanelGrid->addWidget(levelUpButton, 0, 8);
  frontPanelGrid->addWidget(levelDownButton, 1, 8);
  frontPanelGrid->setColumnStretch(9, 80);  // pushes "Preset" and "Recal" to the right edge
  frontPanelGrid->addWidget(presetButton, 0, 10);
  frontPanelGrid->addWidget(recalButton, 1, 10);

  lowerRow = new QHBoxLayout;
  lowerRow->setContentsMargins(0, 0, 0, 0);
  lowerRow->setSpacing(0);
  lowerRow->addWidget(modeList, 20);
  lowerRow->addWidget(modeScrollArea, 80);

  mainColumn = new QVBoxLayout(this);
  mainColumn->setContentsMargins(0, 0, 0, 0);
  mainColumn->setSpacing(0);
  mainColumn->addLayout(frontPanelGrid, 0);
  mainColumn->addLayout(lowerRow, 100);
}

void CentralWidget::addMode(ModeWidget* view) {
  auto* item = new QListWidgetItem(view->modeName(), modeList);
  item->setData(modeIndexRole, view->modeIndex());
  modeViews.append(view);
  modeStack->addMode(view->modeIndex(), view);
  modeGroup->addButton(view->enabledCheck(), view->modeIndex());
}

void CentralWidget::paintEvent(QPaintEvent* event) {
  QPainter painter(this);
  painter.fillRect(frontPanelGrid->geometry(), QColor(219, 219, 219));
  QWidget::paintEvent(event);
}

int CentralWidget::currentMode() const { return std::max(modeGroup->checkedId(), 0); }

double CentralWidget::frequency() const { return frequencyEdit->value(); }
double CentralWidget::level() const { return levelEdit->value(); }
double CentralWidget::frequencyStep() const { return frequencyStepEdit->value(); }
double CentralWidget::levelStep() const { return levelStepEdit->value(); }
bool CentralWidget::rfEnabled() const { return rfButtons->state() == 0; }
bool CentralWidget::modEnabled() const { return modButtons->state() == 0; }
bool CentralWidget::referenceEnabled() const { return referenceButton->isChecked(); }

// ---- Restart path -------------------------------------------------------------------------

void CentralWidget::settingsChanged() {
  if (!device->isOpen()) return;
  opcGate.markSettingsPending();
  // Stopped with a device (during a preset load): the mark stays, so an "*OPC" now waits for
  // the next complete restart.
  if (!engine.isStreaming()) return;
  emit updateStatusBarModeSignal("");
  // Blocks until the running generator leaves its loop, or finishes its build.
  engine.stopStreaming();
  opcGate.setOutputReady(false);
  impairments->invalidateNoise();
  device->setIQOffset(impairments->iqOffset());
  device->setTimebase(referenceButton->isChecked() ? KrtTimebaseExternal : KrtTimebaseInternal);
  device->setTimebaseOffset(impairments->timebaseOffset());
  emit updateTemp(QString::fromStdString(device->temperatureText()));
  opcGate.clearSettingsPending();
  startStreaming();
}

void CentralWidget::modeChanged(int) {
  ModeWidget* previous = activeMode.load();
  if (previous) disconnect(previous, &ModeWidget::updated, this, &CentralWidget::settingsChanged);
  ModeWidget* view = modeStack->findMode(modeGroup->checkedId());
  activeMode = view;
  // Only the active view's edits restart the output; the others wait until enabled.
  if (view) connect(view, &ModeWidget::updated, this, &CentralWidget::settingsChanged);
  settingsChanged();
}

void CentralWidget::setRFEnabled(bool enabled) { rfButtons->setState(enabled ? 0 : 1); }

void CentralWidget::setModEnabled(bool enabled) { modButtons->setState(enabled ? 0 : 1); }

void CentralWidget::setReference(KrtTimebaseState newState) {
  referenceButton->setChecked(newState == KrtTimebaseExternal);
  settingsChanged();
}

void CentralWidget::setCenterFrequency(double newFreq) {
  if (newFreq < minFrequency || newFreq > maxFrequency) {
    newFreq = std::clamp(newFreq, minFrequency, maxFrequency);
    errorLogPut(-1, "Center frequency clamped");
  }
  frequencyEdit->setValue(newFreq);
  settingsChanged();
}

void CentralWidget::setStepFrequency(double newStep) {
  if (newStep < 0.0 || newStep > maxFrequency) {
    newStep = std::clamp(newStep, 0.0, maxFrequency);
    errorLogPut(-1, "Step frequency clamped");
  }
  frequencyStepEdit->setValue(newStep);
  frequencyEdit->setStep(newStep);
}

void CentralWidget::increaseCenterFrequency() {
  setCenterFrequency(frequencyEdit->value() + frequencyStepEdit->value());
}

void CentralWidget::decreaseCenterFrequency() {
  setCenterFrequency(frequencyEdit->value() - frequencyStepEdit->value());
}

void CentralWidget::setLevel(double newLevel) {
  levelEdit->setValue(std::clamp(newLevel, minLevel, maxLevel));
  settingsChanged();
}

void CentralWidget::setLevelStep(double newStep) {
  newStep = std::clamp(newStep, 0.0, maxLevelStep);
  levelStepEdit->setValue(newStep);
  levelEdit->setStep(newStep);
}

void CentralWidget::increaseLevel() { setLevel(levelEdit->value() + levelStepEdit->value()); }

void CentralWidget::decreaseLevel() { setLevel(levelEdit->value() - levelStepEdit->value()); }

void CentralWidget::triggerPressed() { engine.requestTrigger(); }

void CentralWidget::referenceKeyPressed() { settingsChanged(); }

void CentralWidget::presetButtonPressed() {
  setRFEnabled(false);
  setModEnabled(false);
  referenceButton->setChecked(false);
  settingsChanged();
  setCenterFrequency(1e9);
  setStepFrequency(1e6);
  levelEdit->setValue(-20.0);
  settingsChanged();
  levelStepEdit->setValue(10.0);
  levelEdit->setStep(10.0);
  impairments->setDefaults();
  // The selected mode stays as it was.
  for (ModeWidget* view : modeViews) view->setDefaults();
}

void CentralWidget::modeSelectChanged(QListWidgetItem* item) {
  if (item) modeStack->showMode(item->data(modeIndexRole).toInt());
}

// ---- Build progress -----------------------------------------------------------------------

void CentralWidget::showProgressDialogSlot() {
  if (!progressDialog) {
    progressDialog = new QProgressDialog("Building Waveform", QString(), 0, 100, this);
    progressDialog->setCancelButton(nullptr);
    progressDialog->setWindowModality(Qt::WindowModal);
  }
  progressDialog->setValue(0);
  progressDialog->show();
}

void CentralWidget::setProgressPercentSlot(int progress) {
  if (progressDialog) progressDialog->setValue(progress);
}

void CentralWidget::hideProgressDialogSlot() {
  if (progressDialog) progressDialog->hide();
}
