// The fixture of the unit tests: fakes in place of log and modem, and both pipes to the parent in hand.
#pragma once

#include <gtest/gtest.h>

#include "core/ground/hook_message.h"
#include "handset/bytes.h"
#include "support/fake_platform.h"

namespace kesext_test {

class UnitTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  /// What was written to the parent, in one read; empty when nothing was.
  [[nodiscard]] handset::Bytes Written() const;
  /// A received request of these bytes. There is one; it is good until the next call.
  static const kesext::HookRequest& Request(handset::ByteView bytes);

  int pipe_[2] = {-1, -1};
};

}  // namespace kesext_test
