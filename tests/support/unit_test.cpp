#include "support/unit_test.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>

#include "core/ground/process_state.h"

namespace kesext_test {

void UnitTest::SetUp() {
  resetFakes();
  ASSERT_EQ(pipe2(pipe_, O_NONBLOCK), 0);
  kesext::process_state.response_pipe = kesext::process_state.unsolicited_pipe = pipe_[1];
}

void UnitTest::TearDown() {
  resetFakes();
  close(pipe_[0]);
  close(pipe_[1]);
}

handset::Bytes UnitTest::Written() const {
  handset::Bytes bytes(65536);
  const ssize_t count = read(pipe_[0], bytes.data(), bytes.size());
  bytes.resize(count > 0 ? static_cast<size_t>(count) : 0);
  return bytes;
}

const kesext::HookRequest& UnitTest::Request(handset::ByteView bytes) {
  static kesext::HookRequest request;
  request.bytes.fill(0);
  std::copy(bytes.begin(), bytes.end(), request.bytes.begin());
  return request;
}

}  // namespace kesext_test
