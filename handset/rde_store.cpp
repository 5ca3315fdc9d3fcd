#include "handset/rde_store.h"

#include <algorithm>
#include <stdexcept>

namespace handset {
namespace {

// Offsets in a request, whose data follow the five words.
constexpr size_t kIndexAt = 0;
constexpr size_t kRecordAt = 4;
constexpr size_t kOffsetAt = 8;
constexpr size_t kLengthAt = 12;
constexpr size_t kDataLengthAt = 16;
constexpr size_t kDataAt = 20;

// A read's response has two result words before the same fields.
constexpr size_t kErrorAt = 4;
constexpr size_t kResultSize = 8;
constexpr size_t kReadResponseSize = kResultSize + kDataAt + kRdeDataMax;
static_assert(kReadResponseSize == 540);

Bytes refuse(Bytes response, uint32_t error) {
  putLe<uint32_t>(response, 0, 1);
  putLe(response, kErrorAt, error);
  return response;
}

}  // namespace

void RdeStore::set(uint32_t index, ByteView data, uint32_t record) {
  if (data.size() > kRdeDataMax) throw std::length_error("RDE element too long");
  const std::scoped_lock lock(mutex_);
  elements_[{index, record}].assign(data.begin(), data.end());
}

std::optional<Bytes> RdeStore::get(uint32_t index, uint32_t record) const {
  const std::scoped_lock lock(mutex_);
  const auto found = elements_.find({index, record});
  if (found == elements_.end()) return std::nullopt;
  return found->second;
}

void RdeStore::erase(uint32_t index, uint32_t record) {
  const std::scoped_lock lock(mutex_);
  elements_.erase({index, record});
}

void RdeStore::clear() {
  const std::scoped_lock lock(mutex_);
  elements_.clear();
}

Bytes RdeStore::read(ByteView request) const {
  const auto index = getLe<uint32_t>(request, kIndexAt);
  const auto record = getLe<uint32_t>(request, kRecordAt);
  const auto offset = getLe<uint32_t>(request, kOffsetAt);
  const auto length = getLe<uint32_t>(request, kLengthAt);

  Bytes response(kReadResponseSize);
  putLe(response, kResultSize + kIndexAt, index);
  putLe(response, kResultSize + kRecordAt, record);
  putLe(response, kResultSize + kOffsetAt, offset);

  const std::scoped_lock lock(mutex_);
  const auto found = elements_.find({index, record});
  if (found == elements_.end()) return refuse(std::move(response), kRdeNoElement);

  const Bytes& element = found->second;
  const size_t start = std::min<size_t>(offset, element.size());
  const size_t left = element.size() - start;
  const size_t count = length == 0 ? left : std::min<size_t>(length, left);
  putLe(response, kResultSize + kLengthAt, static_cast<uint32_t>(count));
  putLe(response, kResultSize + kDataLengthAt, static_cast<uint32_t>(count));
  std::copy_n(element.begin() + static_cast<ptrdiff_t>(start), count,
              response.begin() + kResultSize + kDataAt);
  return response;
}

Bytes RdeStore::write(ByteView request) {
  const auto index = getLe<uint32_t>(request, kIndexAt);
  const auto record = getLe<uint32_t>(request, kRecordAt);
  const auto offset = getLe<uint32_t>(request, kOffsetAt);
  const auto length = getLe<uint32_t>(request, kLengthAt);

  Bytes response(kResultSize);
  const bool fits =
      offset <= kRdeDataMax && length <= kRdeDataMax - offset && request.size() - kDataAt >= length;
  if (!fits || getLe<uint32_t>(request, kDataLengthAt) != length) {
    return refuse(std::move(response), kRdeBadLength);
  }

  const std::scoped_lock lock(mutex_);
  Bytes& element = elements_[{index, record}];
  if (element.size() < offset + length) element.resize(offset + length);
  std::copy_n(request.begin() + kDataAt, length, element.begin() + offset);
  return response;
}

}  // namespace handset
