// SPDX-License-Identifier: MIT
// The Bluetooth LE view (mode 17): PHY, channel, access address, CRC, whitening and the PDU.
#pragma once

#include "modes/mode_widget.h"
#include "wireless/ble/ble_packet_bits.h"

#include <QString>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

class HexEditor;
class IntLineEdit;
class MyComboBox;
class QCheckBox;
class QDialog;
class QLabel;
class TimeEdit;

// The controls are the store. What the streaming thread can't read from a control safely (the
// hex fields' text, the check boxes) is mirrored in atomics; the custom pattern sits beside
// them under a lock, since the dialog may replace it while the thread copies it.
class ModeViewBLE : public ModeWidget {
  Q_OBJECT

public:
  explicit ModeViewBLE(QWidget* parent = nullptr);

  // All safe on the streaming thread.
  BleSettings settings() const;
  int samplesPerSymbol() const;
  double idleInterval() const;  // s
  // None when the PDU can't be built (a custom pattern that isn't a whole number of bytes).
  std::optional<std::vector<uint8_t>> pduBits() const;
  bool isSingle() const;
  int triggerMode() const;
  int pduSource() const;  // PN order, or -1 for the custom pattern
  int pduSeed() const;
  int byteCount() const;
  QString customPattern() const;
  QString accessAddressText() const;
  QString crcInitText() const;

  // Setters for presets and tests; each emits updated() once. A combo value that names no
  // entry leaves the selection; the numbers and texts stand as given.
  void setTriggerMode(int mode);
  void setPhy(int phy);
  void setChannelIndex(int index);
  void setAccessAddress(const QString& hex);
  void setCrcAttached(bool on);
  void setCrcInit(const QString& hex);
  void setWhitening(bool on);
  void setPduSource(int source);
  void setPduSeed(int seed);
  void setByteCount(int bytes);
  void setIdleInterval(double seconds);
  void setCustomPattern(const QString& pattern);

  void setDefaults() override;
  // Group "BLE".
  void saveSettings(QSettings* settings) override;
  void loadSettings(QSettings* settings) override;

public slots:
  void defineCustomSequence();

protected:
  // Runs the pattern dialog; tests answer it without a modal loop.
  virtual int runDialog(QDialog& dialog);

private:
  void addControls();
  void connectControls();
  void connectHex(HexEditor* edit, std::atomic<uint32_t>& mirror);
  void setHex(HexEditor* edit, std::atomic<uint32_t>& mirror, const QString& hex);
  void setCheck(QCheckBox* box, bool on);

  MyComboBox* triggerCombo;
  MyComboBox* phyCombo;
  IntLineEdit* channelEdit;
  IntLineEdit* spsEdit;
  HexEditor* accessAddressEdit;
  QCheckBox* crcCheck;
  HexEditor* crcInitEdit;
  QCheckBox* whiteningCheck;
  MyComboBox* pduCombo;
  IntLineEdit* seedEdit;
  IntLineEdit* bytesEdit;
  TimeEdit* idleEdit;
  QLabel* durationLabel;

  std::atomic<uint32_t> accessAddress_{0};
  std::atomic<uint32_t> crcInit_{0};
  std::atomic<bool> crcAttached_{true};
  std::atomic<bool> whitening_{true};
  mutable std::mutex customLock;
  QString customPattern_ = "00000000";
};
