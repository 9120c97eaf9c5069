// SPDX-License-Identifier: MIT
// Presets: the whole instrument in one INI file, quick presets and the power-on preset.
#include "core/central_widget.h"

#include "core/device.h"
#include "core/impairment_widget.h"
#include "modes/mode_widget.h"
#include "modes/my_stacked_widget.h"
#include "persist/paths.h"
#include "persist/settings_file.h"
#include "shell/error_queue.h"
#include "shell/message_box.h"
#include "shell/version_checker.h"
#include "widgets/double_edit.h"
#include "widgets/frequency_edit.h"
#include "widgets/my_button_group.h"
#include "widgets/my_list_widget.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QFile>
#include <QPushButton>
#include <QSettings>

#include <algorithm>
#include <cmath>

namespace {

constexpr double minFrequency = 30e6;
constexpr double maxFrequency = 6e9;

// The key's number, or `current` where the key is missing or holds a NaN, which is no value.
double numberOr(const QSettings& settings, const char* key, double current) {
  const double value = settings.value(key, current).toDouble();
  return std::isnan(value) ? current : value;
}

// Clamps to [low, high] and logs `message` with code -1 when the value had to move.
double clampLogged(double value, double low, double high, const char* message) {
  if (value >= low && value <= high) return value;
  errorLogPut(-1, message);
  return std::clamp(value, low, high);
}

}  // namespace

// A path that is no regular file (a FIFO) is left alone; an oversized file is replaced.
void CentralWidget::savePreset(const QString& path) {
  if (!settingsFileWritable(path)) return;
  QSettings settings(path, QSettings::IniFormat);
  settings.remove("");  // nothing of an older file survives
  settings.sync();
  settings.setValue("Mode", currentMode());
  settings.setValue("OutputState", rfEnabled());
  settings.setValue("ModulationState", modEnabled());
  settings.setValue("TimebaseState", referenceEnabled() ? 1 : 0);
  settings.setValue("Frequency", frequency());
  settings.setValue("FrequencyStep", frequencyStep());
  settings.setValue("PowerLevel", level());
  settings.setValue("PowerLevelStep", levelStep());
  impairments->saveSettings(&settings);
  for (ModeWidget* view : modeViews) view->saveSettings(&settings);
}

// With the thread stopped, every restart asked for on the way only marks settings pending; the
// output is rebuilt once at the end. The I/Q offsets, reference and timebase offset reach the
// device at the next restart, not here.
void CentralWidget::loadPreset(const QString& path) {
  if (!QFile::exists(path) || !settingsFileReadable(path)) {
    showWarning(this, "No Preset", "Unable to load preset.");
    return;
  }
  QSettings settings(path, QSettings::IniFormat);
  emit updateStatusBarModeSignal("");
  engine.stopStreaming();
  impairments->loadSettings(&settings);
  for (ModeWidget* view : modeViews) view->loadSettings(&settings);
  loadHeadKeys(settings);
  selectMode(std::max(settings.value("Mode", currentMode()).toInt(), 0));
  // A load without a device has nothing to stream to.
  if (device->isOpen()) startStreaming();
}

void CentralWidget::loadHeadKeys(QSettings& settings) {
  rfButtons->setState(settings.value("OutputState", rfEnabled()).toBool() ? 0 : 1);
  settingsChanged();
  modButtons->setState(settings.value("ModulationState", modEnabled()).toBool() ? 0 : 1);
  settingsChanged();
  referenceButton->setChecked(settings.value("TimebaseState", referenceEnabled() ? 1 : 0).toInt() ==
                              1);
  settingsChanged();

  frequencyEdit->setValue(clampLogged(numberOr(settings, "Frequency", frequency()), minFrequency,
                                      maxFrequency, "Center frequency clamped"));
  settingsChanged();
  const double step = clampLogged(numberOr(settings, "FrequencyStep", frequencyStep()), 0.0,
                                  maxFrequency, "Step frequency clamped");
  frequencyStepEdit->setValue(step);
  frequencyEdit->setStep(step);

  levelEdit->setValue(std::clamp(numberOr(settings, "PowerLevel", level()), -120.0, 10.0));
  settingsChanged();
  const double levelStepValue =
      std::clamp(numberOr(settings, "PowerLevelStep", levelStep()), 0.0, 100.0);
  levelStepEdit->setValue(levelStepValue);
  levelEdit->setStep(levelStepValue);
}

// Mode 0 keeps the mode selected before; an index without a view changes nothing.
void CentralWidget::selectMode(int modeIndex) {
  if (modeIndex == 0) return;
  modeStack->showMode(modeIndex);
  if (QAbstractButton* button = modeGroup->button(modeIndex)) button->click();
  if (QListWidgetItem* row = modeList->findModeRow(modeIndex)) modeList->setCurrentItem(row);
}

void CentralWidget::saveQuickPreset(int n) { savePreset(quickPresetPath(n)); }

void CentralWidget::loadQuickPreset(int n) { loadPreset(quickPresetPath(n)); }

void CentralWidget::savePowerOnPreset() {
  savePreset(powerOnPresetPath());
  if (!settingsFileWritable(powerOnPresetPath())) return;
  QSettings settings(powerOnPresetPath(), QSettings::IniFormat);
  settings.beginGroup("SoftwareVersion");
  settings.setValue("Major", kSoftwareVersion.majorPart);
  settings.setValue("Minor", kSoftwareVersion.minorPart);
  settings.setValue("Revision", kSoftwareVersion.patchPart);
  settings.endGroup();
}

void CentralWidget::deletePowerOnPreset() { QFile::remove(powerOnPresetPath()); }

void CentralWidget::loadPowerOnPreset() {
  const QString path = powerOnPresetPath();
  if (!QFile::exists(path) || !settingsFileReadable(path)) return;
  VersionNumber saved;
  {
    QSettings settings(path, QSettings::IniFormat);
    settings.beginGroup("SoftwareVersion");
    saved = {settings.value("Major", -1).toInt(), settings.value("Minor", -1).toInt(),
             settings.value("Revision", -1).toInt()};
  }
  // A file without the group reads as -1.-1.-1, older than every version.
  if (isNewerVersion(kSoftwareVersion, saved)) {
    showInformation(this, "Power On Preset",
                    "Power On preset was created with an older version of KRT40 software that is "
                    "not compatible with the current version.");
    return;
  }
  loadPreset(path);
}
