#include "platform/clock.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "platform/boot_id.h"

namespace quillcast::platform {
namespace {

TEST(SystemClock, KnowsWhichStartOfTheComputerItCountsFrom) {
  EXPECT_EQ(BootId().size(), 36U);
  EXPECT_EQ(fmt::format("{:08x}", SystemClock().Boot()), BootId().substr(0, 8));
}

}  // namespace
}  // namespace quillcast::platform
