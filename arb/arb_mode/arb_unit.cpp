// SPDX-License-Identifier: MIT
// The arbitrary waveform mode as a unit: view, generator and remote rows 150 to 171.
#include "arb/arb_mode/arb_unit.h"

#include "arb/arb_builder.h"
#include "arb/arb_mode/arb_sequence_player.h"
#include "arb/arb_mode/mode_view_arb.h"
#include "modes/mode_host.h"
#include "modes/mode_registry.h"
#include "remote/scpi.h"
#include "remote/scpi_words.h"
#include "shell/error_queue.h"

#include <climits>

namespace {

// Runs on the streaming thread: the play range scaled and padded to the period, at the level
// less its mean power when the level means the signal's average; or the loaded sequence.
void generateArb(const ModeViewArb& view, ModeHost& host) {
  const ArbInfo info = view.getArbInfo();
  if (!info.loaded) {
    host.setStatusText("No Arb File Loaded");
    return;
  }
  if (info.samplesToUse <= 0) return;
  if (info.sequence && !info.sequence->empty()) {
    playArbSequence(*info.sequence, view.playSettings(info), view.triggerMode() == TriggerSingle,
                    host);
    return;
  }
  if (!info.samples) return;
  Waveform wave = buildArbPlayback(*info.samples, view.playSettings(info));
  if (wave.samples.empty() || wave.samples.size() > static_cast<size_t>(INT_MAX)) return;
  host.retune(wave.sampleRate, wave.levelOffsetDb);
  host.applyChannelFilter(wave.samples.data(), static_cast<int>(wave.samples.size()));
  host.prepareNoise(meanPowerDb(wave.samples.data(), info.samplesToUse), wave.sampleRate);
  host.submitWaveform(wave.samples.data(), static_cast<int64_t>(wave.samples.size()),
                      view.triggerMode() == TriggerSingle);
}

// Row 168: pairs of I, Q, each narrowed to float; an odd count or a value that isn't a number
// loads nothing.
void loadAsciiPairs(ModeViewArb& view, Scpi& command) {
  if (command.parameterCount() % 2 != 0) {
    errorLogPut(-2, "Invalid number of parameters, expected even number of parameters");
    return;
  }
  std::vector<Sample> samples;
  double i = 0.0, q = 0.0;
  while (command.parameterCount() > 0) {
    if (!command.nextDouble(i)) {
      errorLogPut(-2, "Invalid parameter, expected frequency, PATHLOSS:DATA");
      return;
    }
    if (!command.nextDouble(q)) {
      errorLogPut(-2, "Invalid parameter, expected amplitude offset, PATHLOSS:DATA");
      return;
    }
    samples.emplace_back(static_cast<float>(i), static_cast<float>(q));
  }
  view.loadSamples(std::move(samples));
}

void handleArbRow(ModeViewArb& view, ModeHost& host, Scpi& command, int row) {
  int number = 0;
  double value = 0.0;
  QString text;
  QByteArray block;
  switch (row) {
    case 150:
    case 151: handleModeStateRow(host, command, view.modeIndex(), row == 151); break;
    case 152:
      if (readScpiWord(command, scpiWords::triggerType, number))
        view.triggerModeIndexChanged(number);
      break;
    case 153: command.addResponse(scpiWordText(scpiWords::triggerType, view.triggerMode())); break;
    case 154:
      if (command.nextFrequency(value)) view.setSampleRate(value);
      break;
    case 155: addDoubleResponse(command, view.getArbInfo().sampleRate); break;
    case 156:
      if (command.nextInt(number)) view.setPeriod(number);
      break;
    case 157: addIntResponse(command, view.getArbInfo().period); break;
    case 158:
      if (command.nextInt(number)) view.setSampleOffset(number);
      break;
    case 159: addIntResponse(command, view.getArbInfo().sampleOffset); break;
    case 160:
      if (command.nextInt(number)) view.setSamplesToUse(number);
      break;
    case 161: addIntResponse(command, view.getArbInfo().samplesToUse); break;
    case 162: command.addResponse("\"" + view.getArbInfo().name + "\""); break;
    case 163: addIntResponse(command, view.getArbInfo().fileLength); break;
    case 164:
      if (command.nextString(text)) view.loadCsv(text);
      break;
    // 165 and 166 can never match (a keyword ending in a digit); kept as the table has them.
    case 165:
      if (command.nextString(text)) view.loadBin16(text);
      break;
    case 166:
      if (command.nextString(text)) view.loadBin32(text);
      break;
    case 167:
      if (command.nextString(text)) view.loadMidas(text);
      break;
    case 168: loadAsciiPairs(view, command); break;
    case 169: command.nextBlock(block); break;  // read and thrown away: nothing is loaded
    case 170: addBoolResponse(command, view.getArbInfo().loaded); break;
    case 171: view.unloadFile(); break;
    default: break;
  }
}

}  // namespace

void registerArbMode(ModeRegistry& registry) {
  registry.addMode(new ModeViewArb, generateArb, 150, 171, handleArbRow);
}
