// SPDX-License-Identifier: MIT
// Operation-complete state of the remote interface.
#include "core/opc_gate.h"

void OpcGate::markSettingsPending() {
  std::lock_guard<std::mutex> lock(mutex);
  settingsPending = true;
}

void OpcGate::clearSettingsPending() {
  std::lock_guard<std::mutex> lock(mutex);
  settingsPending = false;
}

void OpcGate::setOutputReady(bool ready) {
  std::lock_guard<std::mutex> lock(mutex);
  outputReady = ready;
  if (outputReady && !settingsPending && opcPending) opcPending = false;
}

void OpcGate::armOpc() {
  std::lock_guard<std::mutex> lock(mutex);
  if (!settingsPending && outputReady) return;
  opcPending = true;
}

bool OpcGate::opcComplete() const {
  std::lock_guard<std::mutex> lock(mutex);
  return !opcPending;
}
