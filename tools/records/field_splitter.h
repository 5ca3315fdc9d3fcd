// Takes fields off the front of a record, and notes the first place where they do not fit.
#pragma once

#include <string>
#include <string_view>

#include "handset/bytes.h"
#include "tools/records/decode.h"
#include "tools/records/record_table.h"

namespace tools {

class FieldSplitter {
 public:
  /// Fields and problem become `into`'s. Both have to outlive the splitter.
  FieldSplitter(handset::ByteView record, DecodedRecord& into) : record_(record), into_(into) {}

  /// One field; `value` instead of what its bytes say, when they are all there.
  void take(std::string_view name, FieldKind kind, size_t size, std::string value = {});
  /// A payload of `said` bytes, by the word of the header's field `length_name`, and `zeros_behind` zeros;
  /// that has to be all there is left.
  void takePayload(Fields fields, int64_t said, std::string_view length_name, size_t zeros_behind);
  /// Fields up to the record's end.
  void takeRest(Fields fields) { takeFields(fields, left()); }
  /// Keeps the problem that comes first in the record; of two at one place, the one told first.
  void problem(size_t offset, std::string text);

 private:
  struct Count {
    std::string_view name;
    uint64_t value = 0;
  };

  [[nodiscard]] size_t left() const { return record_.size() - at_; }
  void takeUpTo(size_t end, std::string_view where, std::string_view name, FieldKind kind, size_t size,
                std::string value);
  void takeFields(Fields fields, size_t size);
  void checkCount(const Count& count, const FieldSpec& field, size_t offset, size_t size);

  handset::ByteView record_;
  DecodedRecord& into_;
  size_t at_ = 0;
};

}  // namespace tools
