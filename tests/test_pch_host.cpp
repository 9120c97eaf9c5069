// SPDX-License-Identifier: MIT
// Host of the precompiled gtest, Qt and JSON headers that the Qt test programs reuse.
int main() {
  return 0;
}
