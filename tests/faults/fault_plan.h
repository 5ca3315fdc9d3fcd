// What the fault runs and the process under test share: which calls are to fail and how, and what came of it.
// It stands in a file that both map.
#pragma once

#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace faults {

/// What a call works with.
enum class Group : uint8_t { memory, file, pipe, link, exchange, thread, clock };

/// What becomes of a call that is struck.
enum class Effect : uint8_t {
  fails,        // with the class's error; nothing is done
  interrupted,  // the same, where a signal can interrupt the call
  reset,        // the same, where bytes are transferred
  shortened,    // half of the bytes are transferred
  killed,       // the process is, before the call
  unanswered,   // the modem acts, but its answer does not come
  late,         // the modem acts, and its answer comes when it is not waited for any more
  undecoded,    // the modem acts, but its answer does not decode
  refused,      // the modem refuses with the class's error
  shifted,      // the clock is so many seconds off
};

/// One kind of trouble.
struct FaultClass {
  std::string_view name;
  Group group;
  Effect effect;
  int error;  // errno, the modem's code, or seconds
  bool may_last = true;
};

inline constexpr std::array kFaultClasses = {
    FaultClass{"memory", Group::memory, Effect::fails, ENOMEM},
    FaultClass{"file-error", Group::file, Effect::fails, EIO},
    FaultClass{"file-space", Group::file, Effect::fails, ENOSPC},
    FaultClass{"file-access", Group::file, Effect::fails, EACCES},
    FaultClass{"file-interrupted", Group::file, Effect::interrupted, EINTR},
    FaultClass{"file-short", Group::file, Effect::shortened, 0},
    FaultClass{"killed", Group::file, Effect::killed, 0, false},
    FaultClass{"pipe-error", Group::pipe, Effect::fails, EIO},
    FaultClass{"pipe-full", Group::pipe, Effect::fails, EAGAIN},
    FaultClass{"pipe-interrupted", Group::pipe, Effect::interrupted, EINTR},
    FaultClass{"link-memory", Group::link, Effect::fails, ENOMEM},
    FaultClass{"link-reset", Group::link, Effect::reset, ECONNRESET},
    FaultClass{"link-interrupted", Group::link, Effect::interrupted, EINTR},
    FaultClass{"link-short", Group::link, Effect::shortened, 0, false},
    FaultClass{"modem-silent", Group::exchange, Effect::unanswered, 0},
    FaultClass{"modem-late", Group::exchange, Effect::late, 0},
    FaultClass{"modem-undecoded", Group::exchange, Effect::undecoded, 0},
    FaultClass{"modem-refused", Group::exchange, Effect::refused, 71},
    FaultClass{"thread", Group::thread, Effect::fails, EAGAIN},
    FaultClass{"clock-back", Group::clock, Effect::shifted, -3600},
    FaultClass{"clock-leap", Group::clock, Effect::shifted, 3 * 24 * 3600},
};

struct FaultPlan {
  // Written before the process starts:
  uint32_t fault_class;
  uint32_t first_struck;  // of the calls that the class can strike, counted from 1; 0: none is
  uint32_t struck_count;  // from that one on
  // Written by the process:
  std::array<std::atomic<uint32_t>, kFaultClasses.size()> calls;  // that each class can strike
  std::atomic<uint32_t> strikes;
  char struck_name[32];  // of the first call that was
};

/// The environment variable that names the file.
inline constexpr const char* kPlanVariable = "KESEXT_FAULT_PLAN";

}  // namespace faults
