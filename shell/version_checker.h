// SPDX-License-Identifier: MIT
// Start-up check for a newer software version.
#pragma once

#include <QObject>

// The check itself arrives with the About dialog; until then it never announces anything.
class VersionChecker : public QObject {
  Q_OBJECT
public:
  void start() {}

signals:
  void broadcastNewVersionAvailable();
};
