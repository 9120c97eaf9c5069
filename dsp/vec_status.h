// SPDX-License-Identifier: MIT
// Status codes and precision hints shared by the vector kernels.
#pragma once

// Every kernel returns one of these; callers may ignore it. On any error nothing is written.
enum VecStatus : int {
  VecOk = 0,
  VecErrSize = -1,       // a length below 1 (or an order out of range)
  VecErrNull = -2,       // a null pointer where data is needed
  VecErrDivByZero = -3,  // division by a zero constant
  VecErrRange = -4,      // an argument outside its documented range
};

// Precision hint of the kernels that have two forms.
enum VecHint : int {
  VecHintNone = 0,      // the fast form
  VecHintFast = 1,      // the fast form
  VecHintAccurate = 2,  // computes in double precision
};
