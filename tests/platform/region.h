#pragma once
// Regions of pages that end with the test, and what the system tells of an address.
#include <gtest/gtest.h>

#include <memory>

#include "platform/win32.h"

namespace kor::test {

inline constexpr SIZE_T kPage = 4096;

struct Release {
    void operator()(void* region) const { VirtualFree(region, 0, MEM_RELEASE); }
};
using Region = std::unique_ptr<char, Release>;

inline MEMORY_BASIC_INFORMATION query(const void* address) {
    MEMORY_BASIC_INFORMATION block{};
    EXPECT_EQ(VirtualQuery(address, &block, sizeof block), sizeof block) << address;
    return block;
}

}  // namespace kor::test
