// SPDX-License-Identifier: MIT
// What the three WLAN units share as units: one generator and one registration.
#pragma once

class ModeHost;
class ModeRegistry;
class ModeViewWLAN;

// Runs on the streaming thread: the frame rebuilt from the controls, played in a loop or once a
// trigger. A source with no bit to repeat builds nothing, and nothing plays.
void generateWlan(const ModeViewWLAN& view, ModeHost& host);

// The view joins the mode list with `generateWlan` as its generator; it answers no remote rows.
void registerWlanView(ModeRegistry& registry, ModeViewWLAN* view);
