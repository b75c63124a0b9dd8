#include <curl/curl.h>
#include <poll.h>

#include <algorithm>
#include <memory>
#include <vector>

#include "gpsengine/face/words.h"
#include "host/corrections/answer.h"
#include "host/corrections/source.h"
#include "host/run/deadline.h"
#include "host/run/face.h"
#include "host/run/failure.h"
#include "host/run/url.h"

namespace host {

namespace {

constexpr std::size_t kMostTable = 4 << 20;
constexpr long kConnectTime = 15, kTableTime = 60;  // seconds

void InitCurl() {
  static const CURLcode ready = curl_global_init(CURL_GLOBAL_DEFAULT);
  if (ready != CURLE_OK) throw Failure(ExitCode::failed, curl_easy_strerror(ready));
}

/// libcurl's handles are no types of their own.
template <auto kFree>
struct FreeBy {
  template <class T>
  void operator()(T* handle) const {
    kFree(handle);
  }
};
using Easy = std::unique_ptr<CURL, FreeBy<curl_easy_cleanup>>;
using Multi = std::unique_ptr<CURLM, FreeBy<curl_multi_cleanup>>;
using List = std::unique_ptr<curl_slist, FreeBy<curl_slist_free_all>>;

List ListOf(const std::vector<std::string>& lines) {
  List list;
  for (const std::string& line : lines) list.reset(curl_slist_append(list.release(), line.c_str()));
  return list;
}

/// One request, and what comes of it.
class Request {
 public:
  Request(const CorrectionSource& source, const std::string& password, std::vector<std::string> headers);
  Request(const Request&) = delete;
  Request& operator=(const Request&) = delete;

  CURL* Handle() const { return easy_.get(); }
  const Answer& GetAnswer() const { return answer_; }
  std::string Body(std::string_view bytes) { return answer_.Body(bytes); }
  SourceEnd End() const { return answer_.End(Status()); }
  /// What went wrong, by libcurl's words.
  std::string Reason(CURLcode code) const { return error_[0] != '\0' ? error_ : curl_easy_strerror(code); }
  long Status() const {
    long status = 0;
    curl_easy_getinfo(easy_.get(), CURLINFO_RESPONSE_CODE, &status);
    return status;
  }

  template <class T>
  void Set(CURLoption option, T value) const {
    curl_easy_setopt(easy_.get(), option, value);
  }

 private:
  static std::size_t OnHeader(const char* bytes, std::size_t, std::size_t count, void* self);

  const Easy easy_{curl_easy_init()};
  List headers_;
  char error_[CURL_ERROR_SIZE] = "";
  Answer answer_;
};

Request::Request(const CorrectionSource& source, const std::string& password,
                 std::vector<std::string> headers) {
  const std::string url =
      (source.tls ? "https://" : "http://") + HostAndPort(source.host, source.port) + '/' + source.path;
  headers.insert(headers.end(), {"Ntrip-Version: Ntrip/2.0", "Connection: close"});
  headers_ = ListOf(headers);
  Set(CURLOPT_URL, url.c_str());
  Set(CURLOPT_PROTOCOLS_STR, "http,https");
  Set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
  Set(CURLOPT_HTTP09_ALLOWED, 1L);
  Set(CURLOPT_HTTPHEADER, headers_.get());
  Set(CURLOPT_USERAGENT, "NTRIP gpsengine/" GPSENGINE_VERSION);
  Set(CURLOPT_PROXY, "");
  Set(CURLOPT_NOSIGNAL, 1L);
  Set(CURLOPT_QUICK_EXIT, 1L);  // a name that is still looked up does not hold the end up
  Set(CURLOPT_CONNECTTIMEOUT, kConnectTime);
  Set(CURLOPT_TCP_KEEPALIVE, 1L);
  Set(CURLOPT_ERRORBUFFER, error_);
  Set(CURLOPT_HEADERFUNCTION, &OnHeader);
  Set(CURLOPT_HEADERDATA, this);
  if (source.user.empty()) return;
  Set(CURLOPT_HTTPAUTH, CURLAUTH_BASIC);
  Set(CURLOPT_USERNAME, source.user.c_str());
  Set(CURLOPT_PASSWORD, password.c_str());
}

std::size_t Request::OnHeader(const char* bytes, std::size_t, std::size_t count, void* self) {
  Answer& answer = static_cast<Request*>(self)->answer_;
  answer.TakeHeader(std::string(bytes, count));
  return answer.IsEndless() ? 0 : count;
}

/// A transfer on its way, on the thread that made it.
class Transfer {
 public:
  Transfer(const Request& request, const SourcePeer& peer) : request_(request), peer_(peer) {
    curl_multi_add_handle(multi_.get(), request_.Handle());
    heard_.Set(peer_.patience);
  }
  ~Transfer() { curl_multi_remove_handle(multi_.get(), request_.Handle()); }
  Transfer(const Transfer&) = delete;
  Transfer& operator=(const Transfer&) = delete;

  /// Moves it on until it is done, is to end, or has been silent for too long. `due` does what is due, and
  /// says when to call it again.
  template <class Due>
  SourceEnd Run(Due due) {
    for (;;) {
      int running = 0;
      curl_multi_perform(multi_.get(), &running);
      if (running == 0) return Done();
      if (heard_.HasPassed()) return Silent();
      curl_waitfd stop{peer_.stop.Descriptor(), CURL_WAIT_POLLIN, 0};
      const int time = MillisecondsUntil(std::min(heard_.Earlier(Deadline::kNever), due()));
      curl_multi_poll(multi_.get(), &stop, 1, time, nullptr);
      if (stop.revents != 0) return {};
    }
  }
  void Heard() { heard_.Set(peer_.patience); }
  SourceEnd Silent() const {
    const bool waits = peer_.gga_interval > 0.0 && peer_.gga().empty();
    return {SourceEnd::Kind::lost,
            "nothing has come for " + Print("%g s", peer_.patience) +
                (waits ? ", perhaps for want of a position: there is no fix so far" : "")};
  }

 private:
  SourceEnd Done() const {
    int left = 0;
    const CURLMsg* const message = curl_multi_info_read(multi_.get(), &left);
    const CURLcode code = message == nullptr ? CURLE_OK : message->data.result;
    if (const SourceEnd end = request_.End(); end.kind != SourceEnd::Kind::stopped) return end;
    return {SourceEnd::Kind::lost,
            code == CURLE_OK ? "the other side has closed the connection" : request_.Reason(code)};
  }

  const Multi multi_{curl_multi_init()};
  const Request& request_;
  const SourcePeer& peer_;
  Deadline heard_;
};

/// A mount point's stream. The receiver's position goes up in the same connection, as the body of the
/// request, which has no end: so libcurl sends and receives, whatever is between.
class Stream {
 public:
  Stream(const CorrectionSource& source, const std::string& password, const SourcePeer& peer)
      : peer_(peer), request_(source, password, HeadersFor(peer)), transfer_(request_, peer) {
    request_.Set(CURLOPT_WRITEFUNCTION, &OnData);
    request_.Set(CURLOPT_WRITEDATA, this);
    if (peer.gga_interval <= 0.0) return;
    request_.Set(CURLOPT_UPLOAD, 1L);
    request_.Set(CURLOPT_CUSTOMREQUEST, "GET");
    request_.Set(CURLOPT_READFUNCTION, &OnRoom);
    request_.Set(CURLOPT_READDATA, this);
  }

  SourceEnd Run() {
    return transfer_.Run([this] { return SendPosition(); });
  }

 private:
  static std::vector<std::string> HeadersFor(const SourcePeer& peer) {
    if (peer.gga_interval <= 0.0) return {};
    std::vector<std::string> headers = {"Expect:", "Transfer-Encoding:"};
    std::string gga = peer.gga();
    gga.erase(std::min(gga.find_first_of("\r\n"), gga.size()));
    if (!gga.empty()) headers.push_back("Ntrip-GGA: " + gga);
    return headers;
  }

  static std::size_t OnData(const char* bytes, std::size_t, std::size_t count, void* self) {
    auto& stream = *static_cast<Stream*>(self);
    const std::string body = stream.request_.Body({bytes, count});
    if (stream.request_.End().kind != SourceEnd::Kind::stopped) return 0;
    stream.transfer_.Heard();
    if (!body.empty()) stream.peer_.take(body);
    return count;
  }

  static std::size_t OnRoom(char* to, std::size_t, std::size_t room, void* self) {
    auto& stream = *static_cast<Stream*>(self);
    if (stream.position_.empty()) return CURL_READFUNC_PAUSE;
    const std::size_t count = stream.position_.copy(to, room);
    stream.position_.erase(0, count);
    return count;
  }

  /// Asked for once a second as long as there is none.
  Deadline::Moment SendPosition() {
    if (peer_.gga_interval <= 0.0 || request_.GetAnswer().Status().empty()) return Deadline::kNever;
    if (!due_.IsSet() || due_.HasPassed()) {
      if (position_.empty()) position_ = peer_.gga();
      due_.Set(position_.empty() ? 1.0 : peer_.gga_interval);
      curl_easy_pause(request_.Handle(), CURLPAUSE_CONT);
    }
    return due_.Earlier(Deadline::kNever);
  }

  const SourcePeer& peer_;
  std::string position_;  // on its way
  Deadline due_;
  Request request_;
  Transfer transfer_;
};

SourceEnd ReadPort(const CorrectionSource& source, const SourcePeer& peer) {
  const Request request(source, "", {});
  request.Set(CURLOPT_CONNECT_ONLY, 1L);
  Transfer transfer(request, peer);
  SourceEnd end = transfer.Run([] { return Deadline::kNever; });
  curl_socket_t socket = CURL_SOCKET_BAD;
  curl_easy_getinfo(request.Handle(), CURLINFO_ACTIVESOCKET, &socket);
  if (socket == CURL_SOCKET_BAD || end.kind == SourceEnd::Kind::stopped) return end;
  for (char piece[4096];;) {
    std::vector<pollfd> waits = {{socket, POLLIN, 0}, {peer.stop.Descriptor(), POLLIN, 0}};
    Deadline patience;
    patience.Set(peer.patience);
    WaitFor(waits, patience.Earlier(Deadline::kNever));
    if (waits[1].revents != 0) return {};
    if (waits[0].revents == 0) return transfer.Silent();
    std::size_t count = 0;
    const CURLcode code = curl_easy_recv(request.Handle(), piece, sizeof piece, &count);
    if (code == CURLE_AGAIN) continue;
    if (code != CURLE_OK || count == 0)
      return {SourceEnd::Kind::lost, "the other side has closed the connection"};
    peer.take({piece, count});
  }
}

std::size_t OnTable(const char* bytes, std::size_t, std::size_t count, void* text) {
  auto& table = *static_cast<std::string*>(text);
  if (table.size() + count > kMostTable) return 0;
  table.append(bytes, count);
  return count;
}

int OnProgress(void* interrupt, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  return static_cast<const Interrupt*>(interrupt)->HasCome() ? 1 : 0;
}

}  // namespace

void CheckNetwork(const CorrectionSource&) {
  InitCurl();
}

SourceEnd ReadNetwork(const CorrectionSource& source, const std::string& password, const SourcePeer& peer) {
  InitCurl();
  if (source.kind == CorrectionSource::Kind::tcp) return ReadPort(source, peer);
  return Stream(source, password, peer).Run();
}

std::string FetchSourceTable(const CorrectionSource& caster, const std::string& password,
                             const Interrupt& interrupt) {
  InitCurl();
  std::string table;
  const Request request(caster, password, {});
  request.Set(CURLOPT_WRITEFUNCTION, &OnTable);
  request.Set(CURLOPT_WRITEDATA, &table);
  request.Set(CURLOPT_TIMEOUT, kTableTime);
  request.Set(CURLOPT_NOPROGRESS, 0L);
  request.Set(CURLOPT_XFERINFOFUNCTION, &OnProgress);
  request.Set(CURLOPT_XFERINFODATA, &interrupt);
  const CURLcode code = curl_easy_perform(request.Handle());
  if (interrupt.HasCome()) throw Failure(ExitCode::interrupted, "interrupted");
  // Some casters end their table by closing, whatever length they have told.
  const bool whole = table.find("ENDSOURCETABLE") != std::string::npos;
  if (whole) return table;
  const SourceEnd end = request.End();
  const bool is_refused = end.kind == SourceEnd::Kind::refused;
  throw Failure(ExitCode::failed, caster.Name() + ": " +
                                      (is_refused         ? end.reason
                                       : code != CURLE_OK ? request.Reason(code)
                                                          : "what came is no table of mount points"));
}

std::string NetworkVersion() {
  return std::string("libcurl ") + curl_version_info(CURLVERSION_NOW)->version;
}

}  // namespace host
