#include "host/server/mqttconnection.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include "host/run/failure.h"

namespace host {

namespace {

constexpr int kAtLeastOnce = 1;        // the quality of service of all that is published
constexpr int kKeepAlive = 30;         // seconds
constexpr std::size_t kInFlight = 16;  // messages; the library queues by itself beyond 20
constexpr std::chrono::seconds kTick{5};
constexpr char kNoAnswer[] = "it does not answer";

/// What the library says, without what parts of it are called, nor a full stop.
std::string Tail(std::string_view text) {
  if (text.ends_with('.')) text.remove_suffix(1);
  return std::string(text.substr(text.rfind(':') + 1));
}

MqttConnection& ConnectionOf(void* object) {
  return *static_cast<MqttConnection*>(object);
}

}  // namespace

MqttConnection::MqttConnection(const MqttOptions& options, const std::string& will, const MqttLimits& limits,
                               std::shared_ptr<MqttQueue> queue)
    : topic_(options.broker.prefix + '/' + options.id + '/'),
      broker_(options.broker),
      name_("the MQTT broker " + broker_.Name()),
      limits_(limits),
      queue_(std::move(queue)),
      client_(mosquitto_new(options.id.c_str(), true, this), &mosquitto_destroy),
      pause_(limits.first_pause) {
  if (!client_) throw Failure(ExitCode::failed, "MQTT cannot be set up: " + ReasonOf(MOSQ_ERR_ERRNO));
  SetUp(options, will);
  if (broker_.tls) SetUpTls(options.ca_file);
}

void MqttConnection::SetUp(const MqttOptions& options, const std::string& will) {
  mosquitto* const client = client_.get();
  const std::string password = ReadMqttPassword(options);
  if (!broker_.user.empty()) {
    mosquitto_username_pw_set(client, broker_.user.c_str(), password.empty() ? nullptr : password.c_str());
  }
  mosquitto_will_set(client, (topic_ + "status").c_str(), static_cast<int>(will.size()), will.data(),
                     kAtLeastOnce, /*retain=*/true);
  mosquitto_int_option(client, MOSQ_OPT_TCP_NODELAY, 1);
  mosquitto_connect_callback_set(
      client, [](mosquitto*, void* object, int code) { ConnectionOf(object).OnConnect(code); });
  mosquitto_publish_callback_set(client,
                                 [](mosquitto*, void* object, int) { ConnectionOf(object).OnAnswer(); });
  mosquitto_log_callback_set(client, [](mosquitto*, void* object, int level, const char* text) {
    if (level == MOSQ_LOG_ERR) ConnectionOf(object).error_ = Tail(text);
  });
}

// For every connection but the first the library wants a place of certificates, beside those of the system.
void MqttConnection::SetUpTls(const std::string& ca_file) {
  const char* const file = ca_file.empty() ? nullptr : ca_file.c_str();
  const char* const folder = ca_file.empty() ? "/etc/ssl/certs" : nullptr;
  errno = 0;
  if (mosquitto_tls_set(client_.get(), file, folder, nullptr, nullptr, nullptr) != MOSQ_ERR_SUCCESS) {
    throw Failure(ExitCode::failed, "cannot read --mqtt-ca " + ca_file + ": " + std::strerror(errno));
  }
  mosquitto_int_option(client_.get(), MOSQ_OPT_TLS_USE_OS_CERTS, ca_file.empty() ? 1 : 0);
}

void MqttConnection::Run() {
  Connect();
  while (GoesOn()) {
    Wait();
    Publish();
    if (retry_.HasPassed()) Connect();
  }
  Leave();
}

/// May block, for as long as a name is looked up and addresses are tried.
void MqttConnection::Connect() {
  retry_.Clear();
  refusal_.clear();
  error_.clear();
  state_ = State::connecting;
  const int error = mosquitto_connect(client_.get(), broker_.host.c_str(), broker_.port, kKeepAlive);
  if (error != MOSQ_ERR_SUCCESS) return Lose(ReasonOf(error));
  answer_.Set(limits_.answer);
}

bool MqttConnection::GoesOn() {
  if (!queue_->IsClosed()) return true;
  if (!farewell_.IsSet()) farewell_.Set(limits_.farewell);
  const bool has_more = !queue_->IsEmpty() || in_flight_ > 0;
  return has_more && state_ != State::away && !farewell_.HasPassed();
}

Deadline::Moment MqttConnection::NextAt() const {
  const Deadline::Moment next = farewell_.Earlier(retry_.Earlier(answer_.Earlier(Deadline::kNever)));
  return state_ == State::away ? next : std::min(next, Deadline::Clock::now() + kTick);
}

void MqttConnection::Wait() {
  mosquitto* const client = client_.get();
  const int socket = state_ == State::away ? -1 : mosquitto_socket(client);
  const auto events = static_cast<short>(mosquitto_want_write(client) ? POLLIN | POLLOUT : POLLIN);
  std::vector<pollfd> waits = {{queue_->News().Descriptor(), POLLIN, 0}, {socket, events, 0}};
  WaitFor(waits, NextAt());
  if (waits[0].revents != 0) queue_->News().Clear();
  if (state_ == State::away) return;
  int error = mosquitto_socket(client) < 0 ? MOSQ_ERR_CONN_LOST : MOSQ_ERR_SUCCESS;
  if (error == MOSQ_ERR_SUCCESS && (waits[1].revents & ~POLLOUT) != 0) error = Read();
  if (error == MOSQ_ERR_SUCCESS && (waits[1].revents & POLLOUT) != 0) error = mosquitto_loop_write(client, 1);
  if (error == MOSQ_ERR_SUCCESS) error = mosquitto_loop_misc(client);
  if (error != MOSQ_ERR_SUCCESS) return Lose(ReasonOf(error));
  if (answer_.HasPassed()) Lose(kNoAnswer);
}

/// Gives the library's error. It reads a message or a few, and what else it holds decrypted does not show at
/// the socket.
int MqttConnection::Read() {
  for (;;) {
    const std::size_t before = in_flight_;
    const int error = mosquitto_loop_read(client_.get(), 1);
    if (error != MOSQ_ERR_SUCCESS || in_flight_ == before) return error;
  }
}

void MqttConnection::Publish() {
  while (state_ == State::open && in_flight_ < kInFlight) {
    const auto message = queue_->Take();
    if (!message) return;
    // The library keeps it until it is acknowledged, over a loss of the connection too.
    if (in_flight_++ == 0) answer_.Set(limits_.answer);
    mosquitto_publish(client_.get(), nullptr, (topic_ + message->leaf).c_str(),
                      static_cast<int>(message->payload.size()), message->payload.data(), kAtLeastOnce,
                      message->is_state);
  }
}

void MqttConnection::OnConnect(int code) {
  if (code != 0) {
    const bool is_login = code == 4 || code == 5;  // as MQTT 3.1.1 numbers them
    refusal_ = std::string("it refuses the connection:") + Tail(mosquitto_connack_string(code)) +
               (is_login ? ": check the user in the URL, and GPSENGINE_MQTT_PASSWORD or the file of "
                           "--mqtt-password-file"
                         : "");
    return;
  }
  if (std::exchange(state_, State::open) == State::open) return;  // a broker that says so twice
  if (in_flight_ == 0) answer_.Clear();
  const auto away = std::chrono::round<std::chrono::seconds>(Deadline::Clock::now() - since_).count();
  const long long dropped = queue_->TakeDropped();
  Complain(name_ +
           (was_open_ ? " is back after " + std::to_string(away) + " s"
                      : " is there, and gets " + topic_ + "fix, sky and status") +
           (dropped > 0 ? "; messages that were dropped: " + std::to_string(dropped) : ""));
  was_open_ = true;
  since_ = Deadline::Clock::now();
  told_.clear();
  queue_->RepeatState();
}

void MqttConnection::OnAnswer() {
  if (in_flight_ > 0) --in_flight_;
  in_flight_ > 0 ? answer_.Set(limits_.answer) : answer_.Clear();
}

std::string MqttConnection::ReasonOf(int error) const {
  constexpr std::pair<int, const char*> kReasons[] = {{MOSQ_ERR_EAI, "its name is not known"},
                                                      {MOSQ_ERR_CONN_LOST, "it has closed the connection"},
                                                      {MOSQ_ERR_PROTOCOL, "what it sends is no MQTT"},
                                                      {MOSQ_ERR_KEEPALIVE, kNoAnswer}};
  if (!refusal_.empty()) return refusal_;
  if (error == MOSQ_ERR_ERRNO) return std::strerror(errno);
  if (error == MOSQ_ERR_TLS) {
    return "no trust in its certificate (" + error_ + "), which has to be for the name " + broker_.host +
           ", by an authority that the system or the file of --mqtt-ca names";
  }
  for (const auto& [known, reason] : kReasons) {
    if (known == error) return reason;
  }
  return Tail(mosquitto_strerror(error));
}

/// Waits for the broker, and tells so once. A reason that waiting does not mend is told whenever it is new.
void MqttConnection::Lose(const std::string& why) {
  const auto now = Deadline::Clock::now();
  const bool was_open = state_ == State::open;
  const bool is_for_the_user = why == refusal_ || !error_.empty();
  // The library closes the socket when it connects again. Until then the peer should not think it is alive.
  if (const int socket = mosquitto_socket(client_.get()); socket >= 0) shutdown(socket, SHUT_RDWR);
  if (was_open && now - since_ > limits_.longest_pause) pause_ = limits_.first_pause;
  if (was_open) since_ = now;
  state_ = State::away;
  answer_.Clear();
  // Not all that have lost the same broker come back at once.
  retry_.Set(pause_ * std::uniform_int_distribution(50, 100)(random_) / 100);
  pause_ = std::min(2 * pause_, limits_.longest_pause);
  if (told_ == why || (!told_.empty() && !is_for_the_user)) return;
  told_ = why;
  Complain((was_open ? name_ + " was lost: " : "cannot reach " + name_ + ": ") + why +
           (queue_->IsClosed() ? "" : ". It is tried again and again, and what is published waits"));
}

/// With something left over the broker is to tell the last state, as for any who leave without a word.
void MqttConnection::Leave() {
  const auto left = static_cast<long long>(queue_->Waiting() + in_flight_);
  if (state_ == State::open && left == 0) mosquitto_disconnect(client_.get());
  const long long lost = left + queue_->TakeDropped();
  if (lost > 0) Complain("messages that did not reach " + name_ + ": " + std::to_string(lost));
}

}  // namespace host
