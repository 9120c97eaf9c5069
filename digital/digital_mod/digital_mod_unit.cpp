// SPDX-License-Identifier: MIT
// The digital modulation mode as a unit: view, generators and remote rows 128 to 149.
#include "digital/digital_mod/digital_mod_unit.h"

#include "digital/digital_mod/mode_view_digital_mod.h"
#include "digital/fsk_builder.h"
#include "digital/fsk_loop.h"
#include "digital/linear_mod_builder.h"
#include "modes/mode_host.h"
#include "modes/mode_registry.h"
#include "remote/scpi.h"
#include "remote/scpi_words.h"

#include <algorithm>
#include <climits>

namespace {

// Samples handed to the device at a time by the FSK loop: 2 MB, so that a stop or a lost
// device is seen within a few milliseconds even at the highest rate.
constexpr int fskPieceSamples = 1 << 18;

// Retunes to the burst's level and lays the impairments' channel filter and noise over it.
// False when there is nothing to play (a map or pattern that fills no symbol).
bool prepare(ModeHost& host, Waveform& wave) {
  if (wave.samples.empty() || wave.samples.size() > static_cast<size_t>(INT_MAX)) return false;
  host.retune(wave.sampleRate, wave.levelOffsetDb);
  host.applyChannelFilter(wave.samples.data(), static_cast<int>(wave.samples.size()));
  host.prepareNoise(wave.levelOffsetDb, wave.sampleRate);
  return true;
}

// The phase at the end of an FSK record is in general not that at its start: every pass over
// the buffer is rotated onto the last sample of the pass before, so the output never jumps.
void playFskContinuous(ModeHost& host, const std::vector<Sample>& record, double sampleRate) {
  host.setOutputReady();
  const std::vector<Sample> buffer = fskLoopBuffer(record, sampleRate);
  const int64_t length = static_cast<int64_t>(buffer.size());
  std::vector<Sample> piece(static_cast<size_t>(std::min<int64_t>(fskPieceSamples, length)));
  float phase = 0.0f;
  while (host.isStreaming()) {
    for (int64_t at = 0; at < length; at += fskPieceSamples) {
      const int count = static_cast<int>(std::min<int64_t>(fskPieceSamples, length - at));
      rotateSamples(buffer.data() + at, piece.data(), count, phase);
      if (at + count == length) phase = phaseOf(piece[count - 1]);
      host.processImpairments(piece.data(), piece.data(), count);
      host.submitIQ(piece.data(), count);
      if (host.connectionLost() || !host.isStreaming()) return;
    }
  }
}

void generateFsk(const ModeViewDigitalMod& view, ModeHost& host) {
  Waveform wave = buildFsk(view.fskSettings());
  if (!prepare(host, wave)) return;
  if (view.triggerMode() == TriggerSingle)
    host.submitWaveform(wave.samples.data(), static_cast<int64_t>(wave.samples.size()), true);
  else
    playFskContinuous(host, wave.samples, wave.sampleRate);
}

// Runs on the streaming thread: the FSK family has a loop of its own, every other modulation
// is one periodic record.
void generateDigitalMod(const ModeViewDigitalMod& view, ModeHost& host) {
  if (fskBitsPerSymbol(view.modulationType()) > 0) {
    generateFsk(view, host);
    return;
  }
  Waveform wave = buildLinearMod(view.linearSettings());
  if (!prepare(host, wave)) return;
  host.submitWaveform(wave.samples.data(), static_cast<int64_t>(wave.samples.size()),
                      view.triggerMode() == TriggerSingle);
}

void handleDigitalModRow(ModeViewDigitalMod& view, ModeHost& host, Scpi& command, int row) {
  int number = 0;
  double value = 0.0;
  switch (row) {
    case 128:
    case 129: handleModeStateRow(host, command, view.modeIndex(), row == 129); break;
    case 130:
      if (readScpiWord(command, scpiWords::triggerType, number)) view.setTriggerMode(number);
      break;
    case 131: command.addResponse(scpiWordText(scpiWords::triggerType, view.triggerMode())); break;
    case 132:
      if (command.nextFrequency(value)) view.setSymbolRate(value);
      break;
    case 133: addDoubleResponse(command, view.symbolRate()); break;
    case 134:
      if (readScpiWord(command, scpiWords::modulationType, number))
        view.setModulationType(static_cast<DigitalMod>(number));
      break;
    case 135:
      command.addResponse(scpiWordText(scpiWords::modulationType, view.modulationType()));
      break;
    case 136:
      if (readScpiWord(command, scpiWords::filterType, number))
        view.setFilterType(static_cast<FilterType>(number));
      break;
    case 137: command.addResponse(scpiWordText(scpiWords::filterType, view.filterType())); break;
    case 138:
      if (command.nextDouble(value)) view.setFilterAlpha(value);
      break;
    case 139: addDoubleResponse(command, view.filterAlpha()); break;
    // The set command's short form is LEN, the query's LENG.
    case 140:
      if (command.nextInt(number)) view.setFilterLength(number);
      break;
    case 141: addIntResponse(command, view.filterLength()); break;
    case 142:
      if (readScpiWord(command, scpiWords::pnSequence, number)) view.setData(number);
      break;
    case 143: command.addResponse(scpiWordText(scpiWords::pnSequence, view.sequence())); break;
    case 144:
      if (command.nextInt(number)) view.setSequenceSeed(number);
      break;
    case 145: addIntResponse(command, view.sequenceSeed()); break;
    case 146:
      if (command.nextFrequency(value)) view.setFskDeviation(value);
      break;
    case 147: addDoubleResponse(command, view.fskDeviation()); break;
    case 148:
      if (command.nextInt(number)) view.setOversample(number);
      break;
    case 149: addIntResponse(command, view.oversample()); break;
    default: break;
  }
}

}  // namespace

void registerDigitalModMode(ModeRegistry& registry) {
  registry.addMode(new ModeViewDigitalMod, generateDigitalMod, 128, 149, handleDigitalModRow);
}
