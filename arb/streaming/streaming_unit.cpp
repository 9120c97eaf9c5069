// SPDX-License-Identifier: MIT
// The streaming mode as a unit: view and its own block loop; it has no remote rows.
#include "arb/streaming/streaming_unit.h"

#include "arb/streaming/mode_view_streaming.h"
#include "arb/streaming/streaming_player.h"
#include "modes/mode_host.h"
#include "modes/mode_registry.h"

#include <QMetaObject>

namespace {

// Runs on the streaming thread; the position and the end cross to the view by queued calls.
void generateStreaming(const ModeViewStreaming& view, ModeHost& host) {
  auto* target = const_cast<ModeViewStreaming*>(&view);
  const auto showPosition = [target](double percent) {
    QMetaObject::invokeMethod(target, "setStreamingPos", Qt::QueuedConnection,
                              Q_ARG(double, percent));
  };
  if (playStreamingFiles(view.getFileList(), view.sampleRate(), view.iqScale(), host,
                         showPosition))
    QMetaObject::invokeMethod(target, "stoppedStreaming", Qt::QueuedConnection);
}

}  // namespace

void registerStreamingMode(ModeRegistry& registry) {
  auto* view = new ModeViewStreaming;
  registry.addView(view);
  registry.setGenerator(view->modeIndex(),
                        [view](ModeHost& host) { generateStreaming(*view, host); });
}
