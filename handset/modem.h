// The modem's end of the modem link: publishes the services, answers requests, sends indications.
//
// Every message of the table is answered by ModemState, until a rule for (service, message id) says
// otherwise. answer(), fail(), handle() and silence() replace one another; delay() adds to any of them;
// restore() undoes all. Unless it is silenced, a request whose size is not the table's is refused with
// kMalformed, and one that neither table nor rules know with kUnknownMessage. Rules may be set for ids
// outside the table; those take any size.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "handset/bytes.h"
#include "handset/message_table.h"
#include "handset/modem_state.h"
#include "handset/socket_server.h"
#include "handset/timeout.h"

namespace handset {

/// Codes that the modem refuses with by itself.
inline constexpr int32_t kMalformed = 1;
inline constexpr int32_t kNotPublished = 31;
inline constexpr int32_t kUnknownMessage = 71;

/// An answer: code 0 and a body, or an error code, which goes without a body.
struct Reply {
  int32_t code = 0;
  Bytes body;
};

/// How long the process waits for an answer.
inline constexpr Millis kProcessPatience{15'000};

struct Received {
  Service service{};
  uint16_t id = 0;
  uint32_t transaction = 0;
  Bytes body;
  ConnectionId connection = 0;
};

/// Something that crossed the link: a request and what became of it, or an indication.
struct Crossing {
  Service service{};
  uint16_t id = 0;
  bool indication = false;
  Bytes body;  // of the request or the indication
  Instant asked;
  Instant done;                // when the answer went; the same for an indication or when there is no answer
  std::optional<Reply> reply;  // none: a silenced request, or an indication
};

/// Everything may be called from any thread, but start() and stop() only from one at a time and never from a
/// handler.
class Modem {
 public:
  using Handler = std::function<Reply(ByteView body)>;

  /// Does not listen yet. `root` is the handset folder.
  explicit Modem(const std::string& root);
  Modem(const Modem&) = delete;
  Modem& operator=(const Modem&) = delete;
  ~Modem();

  /// Listens on the folder's modem.sock. Throws std::system_error when it cannot,
  /// with EADDRINUSE when another modem listens there.
  void start();
  /// Goes away: no socket, no connections. Settings, state and recorded requests stay.
  void stop();

  /// How many instances of a service there are; 1 at first. A service with none refuses to connect.
  void publish(Service service, int32_t instances);
  [[nodiscard]] int32_t instances(Service service) const;
  /// Refuses to connect with this code; 0 accepts again.
  void refuseConnect(Service service, int32_t code);

  void answer(Service service, uint16_t id, ByteView body);
  void fail(Service service, uint16_t id, int32_t code);
  /// Receives requests without answering; respond() may do so later.
  void silence(Service service, uint16_t id);
  /// Answers with what `handler` returns. It runs on the modem's thread, so what it waits for holds up all.
  void handle(Service service, uint16_t id, Handler handler);
  /// Sends answers this much later; others overtake them. 0 sends at once.
  void delay(Service service, uint16_t id, Millis time);
  void restore(Service service, uint16_t id);

  /// What requests are answered by instead of the state, of those that it was told anything of.
  struct Rule {
    std::optional<Reply> reply = std::nullopt;
    Handler handler = {};
    Millis delay{0};
    bool silent = false;
  };
  using Rules = std::map<std::pair<Service, uint16_t>, Rule>;
  [[nodiscard]] Rules rules() const;

  /// A copy of what the modem remembers.
  [[nodiscard]] ModemState state() const;
  void change(const std::function<void(ModemState&)>& change);
  void setElement(uint32_t index, ByteView data, uint32_t record = 0);
  /// Nothing when there is no such element.
  [[nodiscard]] std::optional<Bytes> element(uint32_t index, uint32_t record = 0) const;
  /// What the state answers, rules apart.
  Reply ownReply(Service service, uint16_t id, ByteView body);
  /// Forgets everything that it was told and that was written: state, rules, instances.
  void reset();
  /// `told` is called after each change of what reset() forgets, before the answer to the request that made
  /// it goes out, on the thread that made it.
  void onChange(std::function<void()> told);

  /// Sends an indication to every client of the service. Returns how many got it.
  size_t indicate(Service service, uint16_t id, ByteView body);
  size_t indicate(uint16_t id, ByteView body) { return indicate(Service::vendor, id, body); }
  /// Sends a packet as it stands to every client of the service. Returns how many got it.
  size_t sendRaw(Service service, ByteView packet);
  /// Answers a recorded request by hand; nothing keeps a caller from doing so twice. False when its
  /// connection is gone.
  bool respond(const Received& request, int32_t code, ByteView body = {});

  /// Copies of the recorded requests, in the order they came in; refused ones are among them.
  [[nodiscard]] std::vector<Received> requests() const;
  /// The recorded requests, which are then no longer recorded.
  std::vector<Received> takeRequests();
  /// Whether requests are recorded; they are at first.
  void recordRequests(bool on);
  /// Whether crossings are recorded; they are not at first. Those that were are forgotten.
  void recordCrossings(bool on);
  /// The recorded crossings that are done by now, which are then no longer recorded.
  std::vector<Crossing> takeCrossings();
  /// The message that the process has been waiting for longest, because it is silenced or delayed; nothing
  /// when there is none.
  std::optional<std::pair<Service, uint16_t>> waitedFor();

  /// Each waits until there are at least `count`; false when the time passed first.
  bool waitForRequests(size_t count, Millis timeout = kTimeout);
  bool waitForClients(Service service, size_t count, Millis timeout = kTimeout);

 private:
  struct OpenRequest {
    Service service{};
    uint16_t id = 0;
    Instant until;
  };
  struct Publication {
    int32_t instances = 1;
    int32_t refusal = 0;
  };
  struct Peer {
    host::FrameKind role{};  // lookup or connect
    Service service{};
  };

  /// In place of the one that is there, but for its delay.
  void setRule(Service service, uint16_t id, Rule rule);
  void forgetAnswered(Instant now);
  void record(Crossing crossing);
  void onPacket(ConnectionId id, ByteView packet);
  void onClosed(ConnectionId id);
  void onLookup(ConnectionId id, Service service);
  void onConnect(ConnectionId id, Service service);
  void onRequest(ConnectionId id, const host::FrameHeader& header, ByteView body);
  Reply replyTo(const host::FrameHeader& header, ByteView body, const Rule& rule);
  /// Changes something under the lock, and tells.
  template <typename Change>
  void changeSome(Change change);
  /// The connections that are clients of the service; under the lock.
  [[nodiscard]] std::vector<ConnectionId> clients(Service service) const;

  const std::string socket_path_;

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  ModemState state_;
  std::map<Service, Publication> published_;
  std::map<ConnectionId, Peer> peers_;
  Rules rules_;
  std::function<void()> told_ = [] {};
  std::vector<Received> requests_;
  std::vector<OpenRequest> open_;
  std::vector<Crossing> crossings_;
  bool records_crossings_ = false;
  bool recording_ = true;

  SocketServer server_;  // last: its thread uses all of the above
};

}  // namespace handset
