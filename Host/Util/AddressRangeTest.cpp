// SPDX-License-Identifier: Apache-2.0
#include "Host/Util/AddressRange.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace {

using ScEng::AddressRange;

const int in_this_file = 1;

TEST(AddressRange, IsThatOfTheFile) {
  const int local = 0;
  const AddressRange program = AddressRange::FindOf(&in_this_file);
  EXPECT_TRUE(program.Contains(reinterpret_cast<std::uintptr_t>(&in_this_file)));
  EXPECT_FALSE(program.Contains(reinterpret_cast<std::uintptr_t>(&local)));
  EXPECT_FALSE(program.Contains(program.end));
  EXPECT_EQ(AddressRange::FindOf(nullptr).end, 0U);
  EXPECT_EQ(AddressRange::FindOf(&local).end, 0U);
}

}  // namespace
