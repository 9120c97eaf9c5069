// SPDX-License-Identifier: MIT
// Start-up check for a newer software version.
#include "shell/version_checker.h"
