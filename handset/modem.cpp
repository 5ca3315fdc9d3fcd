#include "handset/modem.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <optional>
#include <utility>

namespace handset {
namespace {

using host::FrameHeader;
using host::FrameKind;

FrameHeader responseHeader(Service service, uint16_t id, uint32_t transaction, int32_t code) {
  return {FrameKind::response, service, id, transaction, code};
}

}  // namespace

Modem::Modem(const std::string& root)
    : socket_path_(root + host::kModemSocketPath),
      server_({.received = [this](ConnectionId id, ByteView packet) { onPacket(id, packet); },
               .closed = [this](ConnectionId id) { onClosed(id); }},
              host::kFrameSizeMax) {}

Modem::~Modem() {
  stop();
}

void Modem::start() {
  server_.start(socket_path_);
}

void Modem::stop() {
  server_.stop();
}

template <typename Change>
void Modem::changeSome(Change change) {
  std::function<void()> told;
  {
    const std::scoped_lock lock(mutex_);
    change();
    told = told_;
  }
  told();
}

void Modem::publish(Service service, int32_t instances) {
  changeSome([&] {
    if (std::exchange(published_[service].instances, instances) == instances) return;
    const auto frame = recordBytes(FrameHeader{FrameKind::services, service, 0, 0, instances});
    // Sent under the lock, so that every lookup hears of changes in their order.
    for (const auto& [id, peer] : peers_) {
      if (peer.role == FrameKind::lookup && peer.service == service) server_.send(id, frame);
    }
  });
}

int32_t Modem::instances(Service service) const {
  const std::scoped_lock lock(mutex_);
  const auto found = published_.find(service);
  return found == published_.end() ? Publication{}.instances : found->second.instances;
}

void Modem::refuseConnect(Service service, int32_t code) {
  const std::scoped_lock lock(mutex_);
  published_[service].refusal = code;
}

void Modem::setRule(Service service, uint16_t id, Rule rule) {
  changeSome([&] {
    Rule& kept = rules_[{service, id}];
    rule.delay = kept.delay;
    kept = std::move(rule);
  });
}

void Modem::handle(Service service, uint16_t id, Handler handler) {
  setRule(service, id, {.handler = std::move(handler)});
}

void Modem::answer(Service service, uint16_t id, ByteView body) {
  setRule(service, id, {.reply = Reply{0, Bytes(body.begin(), body.end())}});
}

void Modem::fail(Service service, uint16_t id, int32_t code) {
  setRule(service, id, {.reply = Reply{code, {}}});
}

void Modem::silence(Service service, uint16_t id) {
  setRule(service, id, {.silent = true});
}

void Modem::delay(Service service, uint16_t id, Millis time) {
  changeSome([&] { rules_[{service, id}].delay = time; });
}

void Modem::restore(Service service, uint16_t id) {
  changeSome([&] { rules_.erase({service, id}); });
}

Modem::Rules Modem::rules() const {
  const std::scoped_lock lock(mutex_);
  return rules_;
}

ModemState Modem::state() const {
  const std::scoped_lock lock(mutex_);
  return state_;
}

void Modem::change(const std::function<void(ModemState&)>& change) {
  changeSome([&] { change(state_); });
}

void Modem::setElement(uint32_t index, ByteView data, uint32_t record) {
  change([&](ModemState& state) { state.elements[{index, record}].assign(data.begin(), data.end()); });
}

std::optional<Bytes> Modem::element(uint32_t index, uint32_t record) const {
  const std::scoped_lock lock(mutex_);
  const auto found = state_.elements.find({index, record});
  if (found == state_.elements.end()) return std::nullopt;
  return found->second;
}

void Modem::reset() {
  for (const Service service : kServices) {
    publish(service, Publication{}.instances);
    refuseConnect(service, 0);
  }
  changeSome([&] {
    rules_.clear();
    state_ = {};
  });
}

void Modem::onChange(std::function<void()> told) {
  const std::scoped_lock lock(mutex_);
  told_ = std::move(told);
}

size_t Modem::indicate(Service service, uint16_t id, ByteView body) {
  const auto header = recordBytes(FrameHeader{FrameKind::indication, service, id, 0, 0});
  const Instant now = SocketServer::Clock::now();
  record({service, id, true, Bytes(body.begin(), body.end()), now, now, std::nullopt});
  return sendRaw(service, concat(header, body));
}

size_t Modem::sendRaw(Service service, ByteView packet) {
  std::vector<ConnectionId> receivers;
  {
    const std::scoped_lock lock(mutex_);
    receivers = clients(service);
  }
  return static_cast<size_t>(std::count_if(receivers.begin(), receivers.end(),
                                           [&](ConnectionId id) { return server_.send(id, packet); }));
}

bool Modem::respond(const Received& request, int32_t code, ByteView body) {
  const FrameHeader header = responseHeader(request.service, request.id, request.transaction, code);
  return server_.send(request.connection, recordBytes(header), code == 0 ? body : ByteView{});
}

std::vector<Received> Modem::requests() const {
  const std::scoped_lock lock(mutex_);
  return requests_;
}

std::vector<Received> Modem::takeRequests() {
  const std::scoped_lock lock(mutex_);
  return std::exchange(requests_, {});
}

void Modem::recordRequests(bool on) {
  const std::scoped_lock lock(mutex_);
  recording_ = on;
}

void Modem::forgetAnswered(Instant now) {
  std::erase_if(open_, [now](const OpenRequest& request) { return request.until <= now; });
}

void Modem::record(Crossing crossing) {
  const std::scoped_lock lock(mutex_);
  if (records_crossings_) crossings_.push_back(std::move(crossing));
}

void Modem::recordCrossings(bool on) {
  const std::scoped_lock lock(mutex_);
  records_crossings_ = on;
  crossings_.clear();
}

std::vector<Crossing> Modem::takeCrossings() {
  const std::scoped_lock lock(mutex_);
  const Instant now = SocketServer::Clock::now();
  const auto later = std::stable_partition(crossings_.begin(), crossings_.end(),
                                           [now](const Crossing& crossing) { return crossing.done <= now; });
  std::vector<Crossing> done(std::make_move_iterator(crossings_.begin()), std::make_move_iterator(later));
  crossings_.erase(crossings_.begin(), later);
  return done;
}

std::optional<std::pair<Service, uint16_t>> Modem::waitedFor() {
  const std::scoped_lock lock(mutex_);
  forgetAnswered(SocketServer::Clock::now());
  if (open_.empty()) return std::nullopt;
  return std::pair{open_.front().service, open_.front().id};
}

bool Modem::waitForRequests(size_t count, Millis timeout) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, timeout, [&] { return requests_.size() >= count; });
}

bool Modem::waitForClients(Service service, size_t count, Millis timeout) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, timeout, [&] { return clients(service).size() >= count; });
}

std::vector<ConnectionId> Modem::clients(Service service) const {
  std::vector<ConnectionId> found;
  for (const auto& [id, peer] : peers_)
    if (peer.role == FrameKind::connect && peer.service == service) found.push_back(id);
  return found;
}

void Modem::onPacket(ConnectionId id, ByteView packet) {
  FrameHeader header;
  if (packet.size() < sizeof header) return;
  std::memcpy(&header, packet.data(), sizeof header);
  if (std::ranges::find(kServices, header.service) == std::end(kServices)) return;
  switch (header.kind) {
    case FrameKind::lookup:
      return onLookup(id, header.service);
    case FrameKind::connect:
      return onConnect(id, header.service);
    case FrameKind::request:
      return onRequest(id, header, packet.subspan(sizeof header));
    case FrameKind::services:
    case FrameKind::connected:
    case FrameKind::response:
    case FrameKind::indication:
      return;
  }
}

void Modem::onClosed(ConnectionId id) {
  const std::scoped_lock lock(mutex_);
  peers_.erase(id);
  changed_.notify_all();
}

// The peer is entered under the same lock as the answer is sent, so that it is neither left out of what is
// sent to all after it got the answer, nor sent anything before.

void Modem::onLookup(ConnectionId id, Service service) {
  const std::scoped_lock lock(mutex_);
  const int32_t instances = published_[service].instances;
  if (!server_.send(id, recordBytes(FrameHeader{FrameKind::services, service, 0, 0, instances}))) return;
  peers_[id] = {FrameKind::lookup, service};
  changed_.notify_all();
}

void Modem::onConnect(ConnectionId id, Service service) {
  const std::scoped_lock lock(mutex_);
  const Publication& published = published_[service];
  const int32_t code = published.refusal == 0 && published.instances <= 0 ? kNotPublished : published.refusal;
  if (!server_.send(id, recordBytes(FrameHeader{FrameKind::connected, service, 0, 0, code}))) return;
  if (code != 0) return;
  peers_[id] = {FrameKind::connect, service};
  changed_.notify_all();
}

void Modem::onRequest(ConnectionId id, const FrameHeader& header, ByteView body) {
  const Instant asked = SocketServer::Clock::now();
  Rule rule;
  {
    const std::scoped_lock lock(mutex_);
    const auto peer = peers_.find(id);
    const bool connected = peer != peers_.end() && peer->second.role == FrameKind::connect;
    if (!connected || peer->second.service != header.service) return;
    if (recording_) {
      requests_.push_back(
          {header.service, header.message_id, header.transaction, Bytes(body.begin(), body.end()), id});
      changed_.notify_all();
    }
    const auto found = rules_.find({header.service, header.message_id});
    if (found != rules_.end()) rule = found->second;
    if (rule.silent || rule.delay > Millis::zero()) {
      const Millis open_for = rule.silent ? kProcessPatience : std::min(rule.delay, kProcessPatience);
      forgetAnswered(asked);
      open_.push_back({header.service, header.message_id, asked + open_for});
    }
  }
  const auto recordAs = [&](Instant done, std::optional<Reply> reply) {
    record({header.service, header.message_id, false, Bytes(body.begin(), body.end()), asked, done,
            std::move(reply)});
  };
  if (rule.silent) return recordAs(asked, std::nullopt);

  const Reply reply = replyTo(header, body, rule);
  const auto answer =
      recordBytes(responseHeader(header.service, header.message_id, header.transaction, reply.code));
  const ByteView answer_body = reply.code == 0 ? ByteView(reply.body) : ByteView{};
  const Instant now = SocketServer::Clock::now();
  if (rule.delay > Millis::zero()) {
    recordAs(now + rule.delay, reply);
    server_.sendLater(id, now + rule.delay, concat(answer, answer_body));
  } else {
    recordAs(now, reply);
    server_.send(id, answer, answer_body);
  }
}

Reply Modem::replyTo(const FrameHeader& header, ByteView body, const Rule& rule) {
  const MessageRow* row = findMessage(header.service, header.message_id);
  if (row != nullptr && body.size() != row->request_size) return {kMalformed, {}};
  if (rule.reply) return *rule.reply;
  if (rule.handler) return rule.handler(body);
  return ownReply(header.service, header.message_id, body);
}

Reply Modem::ownReply(Service service, uint16_t id, ByteView body) {
  const MessageRow* row = findMessage(service, id);
  if (row == nullptr) return {kUnknownMessage, {}};
  Reply reply;
  change([&](ModemState& state) { reply.body = state.answer(*row, body); });
  return reply;
}

}  // namespace handset
