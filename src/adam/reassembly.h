// The order of the packets that make up a package of modem logs.
//
//   idle        any packet begins a package: its package id is the package's, its sequence id the one that
//               is expected
//   collecting  a packet has to be of this package; one that does not begin the package anew, as sequence id
//               1 does, also has to have the expected sequence id
//
// A package for the parent and every packet that breaks a rule lead back to idle. So does the last packet,
// once it is stored; what the file system refuses leaves a package where it is.
#pragma once

#include <cstddef>
#include <cstdint>

#include "adam/utility_records.h"

namespace kesext {

class Reassembly {
 public:
  enum class Action { drop, forward, store };
  /// What to do with a packet; what is stored begins `skip` bytes into its payload.
  struct Verdict {
    Action action;
    size_t skip;
  };

  /// Takes the next packet, and logs why when it is to be dropped. A packet to be stored fits its record and
  /// holds more than is skipped.
  Verdict take(const adam_packet& packet);
  /// Back to idle: the package is over.
  void reset() { state_ = State::idle; }

 private:
  enum class State { idle, collecting };

  Verdict takeFirst(const adam_packet& packet);
  Verdict takeNext(const adam_packet& packet);
  Verdict store(const adam_packet& packet, size_t skip);
  Verdict drop();

  State state_ = State::idle;
  // Only while collecting:
  uint32_t package_id_ = 0;
  uint32_t expected_sequence_id_ = 0;
};

}  // namespace kesext
