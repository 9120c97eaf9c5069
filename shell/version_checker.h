// SPDX-License-Identifier: MIT
// Start-up check for a newer software version, fetched once in the background.
#pragma once

#include <QObject>
#include <QString>

#include <atomic>
#include <thread>

// The running version; the remote "version" query answers with the same text.
const char* softwareVersion();

// Field names avoid `major` and `minor`, which some C libraries define as macros.
struct VersionNumber {
  int majorPart = 0;
  int minorPart = 0;
  int patchPart = 0;
};

constexpr VersionNumber kSoftwareVersion{1, 0, 5};

// Reads "major.minor.patch"; empty parts are skipped, and anything but exactly three parts
// gives false. A part that is not a plain number (a trailing line break included) counts as 0.
bool parseVersionText(const QString& text, VersionNumber& version);

// True if `published` is newer than `reference` (the running version unless given).
// Deliberately not a lexicographic comparison: a higher patch only counts when minor and
// major are not lower.
bool isNewerVersion(const VersionNumber& published,
                    const VersionNumber& reference = kSoftwareVersion);

class VersionChecker : public QObject {
  Q_OBJECT

public:
  explicit VersionChecker(QObject* parent = nullptr);
  ~VersionChecker() override;

  // Launches the fetch; later calls do nothing. The address is the build's KRT40_VERSION_URL
  // unless the environment variable of that name gives another.
  void start();
  // Waits for the fetch if it still runs.
  bool isNewVersionAvailable();
  // Does not wait: false while the fetch runs.
  bool connectionFailed() const { return connectionFailed_.load(std::memory_order_relaxed); }

signals:
  // Emitted from the worker thread.
  void broadcastNewVersionAvailable();

private:
  void run(const QString& url);

  // Atomic only to keep the unlocked read of connectionFailed() free of a data race.
  std::atomic<bool> newVersionAvailable{false};
  std::atomic<bool> connectionFailed_{false};
  std::thread thread;
  bool started = false;
};
