// SPDX-License-Identifier: MIT
// The instrument: front panel, mode list and views, and the one restart path to the output.
#pragma once

#include "core/opc_gate.h"
#include "core/stream_engine.h"
#include "core/tune_record.h"
#include "modes/mode_host.h"
#include "modes/mode_list.h"
#include "modes/mode_registry.h"
#include "remote/scpi.h"

#include <QList>
#include <QTcpServer>
#include <QWidget>

#include <atomic>
#include <functional>

class Device;
class DoubleEdit;
class FrequencyEdit;
class ImpairmentWidget;
class ModeWidget;
class MyButtonGroup;
class MyListWidget;
class MyStackedWidget;
class QButtonGroup;
class QGridLayout;
class QHBoxLayout;
class QLabel;
class QListWidgetItem;
class QProgressDialog;
class QPushButton;
class QScrollArea;
class QSettings;
class QSquareButton;
class QTcpSocket;
class QVBoxLayout;
class SCPIRemoteDialog;

// Every change of a setting ends in settingsChanged(), which stops and joins the streaming
// thread, sends the few settings that need a stopped stream, and starts a new thread; the new
// thread reads everything else from the controls. Nothing reaches into a running loop.
// The modes come from their units' registration; this class names none of them.
class CentralWidget : public QWidget, public ModeHost {
  Q_OBJECT
public:
  // `registerUnits` fills the mode list, the dispatch and the routing of the mode rows.
  CentralWidget(Device* device, ImpairmentWidget* impairments, QWidget* parent = nullptr,
                Qt::WindowFlags flags = Qt::WindowFlags(),
                const std::function<void(ModeRegistry&)>& registerUnits = registerModeUnits);
  ~CentralWidget() override;

  void startStreaming();
  void startStreamingQuiet();
  void stopStreaming();

  // The checked "Enabled" box's mode index; 0 while none is checked.
  int currentMode() const override;
  // Adds a view to the list, the stack and the mode group.
  void addMode(ModeWidget* view);
  const QList<ModeWidget*>& views() const { return modeViews; }
  ModeWidget* currentView() const { return activeMode.load(); }

  // Front panel values, as the generators read them on the streaming thread.
  double frequency() const override;
  double level() const override;
  double frequencyStep() const;
  double levelStep() const;
  bool rfEnabled() const;
  bool modEnabled() const;
  bool referenceEnabled() const;
  OpcGate& gate() { return opcGate; }

  // What the mode units use; see ModeHost.
  const std::atomic<bool>& runFlag() const override { return engine.streaming; }
  bool takeTriggerRequest() override;
  void retune(double sampleRateHz, double levelOffsetDb = 0.0) override;
  void submitWaveform(const Sample* samples, int64_t length, bool singleShot) override;
  void applyChannelFilter(Sample* samples, int length) override;
  void prepareNoise(double signalPowerDb, double sampleRateHz) override;
  void processImpairments(const Sample* in, Sample* out, int count) override;
  void setDeviceSampleRate(double sampleRateHz) override;
  void setDeviceFrequency(double frequencyHz) override;
  void setDeviceLevel(double levelDbm) override;
  void submitIQ(const Sample* samples, int count) override;
  void flushAndWait() override;
  void submitTrigger() override;
  bool connectionLost() override;
  void setOutputReady() override;
  void setStatusText(const QString& text) override { emit updateStatusBarModeSignal(text); }
  void showProgress() override { emit showProgressDialogSignal(); }
  void setProgress(int percent) override { emit setProgressPercentSignal(percent); }
  void hideProgress() override { emit hideProgressDialogSignal(); }
  void selectMode(int modeIndex) override;

  // Presets: the whole instrument in one INI file.
  void savePreset(const QString& path);
  void loadPreset(const QString& path);
  void saveQuickPreset(int n);
  void loadQuickPreset(int n);
  void savePowerOnPreset();
  void deletePowerOnPreset();
  void loadPowerOnPreset();

  // Remote interface: one client at a time on the loopback interface.
  void startScpiServer();
  void stopScpiServer();
  void restartScpiServerIfIdle();
  quint16 scpiServerPort() const { return scpiServer.serverPort(); }
  bool isScpiListening() const { return scpiServer.isListening(); }
  SCPIRemoteDialog* remoteNotice() const { return remoteDialog; }
  void handleScpiCommand(Scpi* command);

signals:
  void updateTemp(QString);
  void showProgressDialogSignal();
  void setProgressPercentSignal(int progress);
  void hideProgressDialogSignal();
  void streamingStopped();
  void streamingSetPos(double);
  void updateStatusBarModeSignal(QString text);
  void deviceConnectionLost();
  // Remote commands that act on the main window; connected directly, so they have acted when
  // the emit returns.
  void connectDeviceRequested(int serialNumber);
  void disconnectDeviceRequested();
  void closeWindowRequested();

public slots:
  void modeChanged(int);
  void settingsChanged();
  void setRFEnabled(bool enabled);
  void setModEnabled(bool enabled);
  void setReference(KrtTimebaseState newState);
  void setCenterFrequency(double newFreq);
  void setStepFrequency(double newStep);
  void increaseCenterFrequency();
  void decreaseCenterFrequency();
  void setLevel(double newLevel);
  void setLevelStep(double newStep);
  void increaseLevel();
  void decreaseLevel();
  void triggerPressed();
  void referenceKeyPressed();
  void presetButtonPressed();
  void modeSelectChanged(QListWidgetItem* item);
  void showProgressDialogSlot();
  void setProgressPercentSlot(int progress);
  void hideProgressDialogSlot();
  void handleSCPIConnection();
  void handleSCPIDisconnect();
  void readSCPISocket();

protected:
  void paintEvent(QPaintEvent* event) override;

private:
  void buildFrontPanel();
  void connectFrontPanel();
  void layOutPanel();
  void buildModeList();

  void streamingThreadMain();
  void runGenerator(int modeIndex);
  void runOffState();
  void generateCW();

  void setUpRemote();
  void showRemoteDialog();
  void dropClientOwedTooMuch(QTcpSocket* client);
  void handleCommonCommand(Scpi& command, int id);
  void handleSourceCommand(Scpi& command, int id);
  void loadHeadKeys(QSettings& settings);

  QTcpServer scpiServer;
  QTcpSocket* scpiSocket = nullptr;
  // True while a received chunk is being run; clients replaced meanwhile wait here for it.
  bool readingScpi = false;
  QList<QTcpSocket*> retiredSockets;
  // Replies a client may leave unread before it is dropped.
  static constexpr qint64 maxOwedReplyBytes = 4 << 20;
  static constexpr qint64 scpiReadChunkBytes = 64 << 10;
  Scpi scpi;
  SCPIRemoteDialog* remoteDialog = nullptr;
  OpcGate opcGate;
  Device* device;
  ImpairmentWidget* impairments;
  StreamEngine engine;

  QLabel* frequencyLabel;
  QLabel* stepLabel;
  FrequencyEdit* frequencyEdit;
  FrequencyEdit* frequencyStepEdit;
  QSquareButton* frequencyUpButton;
  QSquareButton* frequencyDownButton;
  QLabel* levelLabel;
  QLabel* levelStepLabel;
  DoubleEdit* levelEdit;
  DoubleEdit* levelStepEdit;
  QSquareButton* levelUpButton;
  QSquareButton* levelDownButton;
  MyButtonGroup* rfButtons;
  MyButtonGroup* modButtons;
  QPushButton* referenceButton;
  QPushButton* triggerButton;
  QPushButton* presetButton;
  QPushButton* recalButton;
  MyListWidget* modeList;
  // Filled by the units at construction: the views, the dispatch and the mode rows.
  ModeRegistry modeUnits;
  QList<ModeWidget*> modeViews;
  QScrollArea* modeScrollArea;
  MyStackedWidget* modeStack;
  // Written on the GUI thread, read by the streaming thread when it starts.
  std::atomic<ModeWidget*> activeMode{nullptr};
  QButtonGroup* modeGroup;
  QGridLayout* frontPanelGrid;
  QHBoxLayout* lowerRow;
  QVBoxLayout* mainColumn;
  QProgressDialog* progressDialog = nullptr;
};
