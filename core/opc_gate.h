// SPDX-License-Identifier: MIT
// Operation-complete state of the remote "*OPC" and "*ESR?" commands.
#pragma once

#include <atomic>
#include <mutex>

// A setting is complete once no change is pending and a tenth of a second of the new output
// has been handed to the device. The mutex makes each operation one step.
class OpcGate {
public:
  void markSettingsPending();
  void clearSettingsPending();
  void setOutputReady(bool ready);
  void armOpc();             // "*OPC"
  bool opcComplete() const;  // "*ESR?"

  bool isSettingsPending() const { return settingsPending; }
  bool isOutputReady() const { return outputReady; }

private:
  mutable std::mutex mutex;
  std::atomic<bool> settingsPending{false};
  std::atomic<bool> outputReady{false};
  std::atomic<bool> opcPending{false};
};
