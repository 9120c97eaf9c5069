// SPDX-License-Identifier: MIT
// The aligned allocator's layout and its refusals.
#include "dsp/vec_alloc.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>

TEST(VecAlloc, AlignedAndBaseStoredInTheWordBefore) {
  for (int bytes : {1, 3, 63, 64, 65, 1000, 1 << 20}) {
    char* p = static_cast<char*>(vecAlloc(bytes));
    ASSERT_NE(p, nullptr) << bytes;
    EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % 64, 0u) << bytes;
    uintptr_t base;
    std::memcpy(&base, p - sizeof(void*), sizeof(base));
    const uintptr_t result = reinterpret_cast<uintptr_t>(p);
    EXPECT_EQ(result, (base + 67) & ~uintptr_t(63)) << bytes;
    EXPECT_GE(result - base, 4u) << bytes;
    std::memset(p, 0xA5, bytes);  // the whole request is usable
    vecFree(p);
  }
}

TEST(VecAlloc, RefusesEmptyNegativeAndOverflowingSizes) {
  for (int bytes : {0, -1, INT_MIN, INT_MAX, INT_MAX - 67})
    EXPECT_EQ(vecAlloc(bytes), nullptr) << bytes;
  vecFree(nullptr);
  vecStateFree(nullptr);
  EXPECT_EQ(vecAllocArray<double>(0), nullptr);
  EXPECT_EQ(vecAllocArray<double>(INT_MAX / 4), nullptr);
}
