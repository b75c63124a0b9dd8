// All there is of cpp-httplib, which takes its time to compile.
#include "host/server/pageserver.h"
#include "host/run/url.h"

#include <httplib.h>

#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstring>
#include <semaphore>
#include <thread>

#include "host/run/failure.h"
#include "host/server/listener.h"
#include "host/server/pagefiles.h"

namespace host {

namespace {

// A page holds one thread for its events and one for sentences, of which the hubs allow 12 and 6; the rest
// are for all other requests.
constexpr std::size_t kThreads = 22;
// Connections that wait for a thread. Any more wait in the kernel.
constexpr std::ptrdiff_t kMostConnections = 32;
constexpr std::chrono::seconds kTimeout{2};
constexpr std::size_t kLongestBody = 1024;
// A connection on which nothing is sent tells nobody that it is gone.
constexpr std::chrono::seconds kLongestSilence{10};

/// Threads, with room for a fixed number of connections.
class BoundedPool : public httplib::TaskQueue {
 public:
  void enqueue(std::function<void()> job) override {
    room_.acquire();
    pool_.enqueue([this, job = std::move(job)] {
      job();
      room_.release();
    });
  }
  void shutdown() override { pool_.shutdown(); }

 private:
  std::counting_semaphore<> room_{kMostConnections};
  httplib::ThreadPool pool_{kThreads};
};

/// The host of a Host header, without the port.
std::string_view HostName(std::string_view header) {
  const auto bracket = header.find(']');
  return header.substr(0, header.find(':', bracket == std::string_view::npos ? 0 : bracket));
}

/// A page of some web site may make its own name point here, and would then read the position as if it were
/// its own. What it cannot change is the name that the browser asks for.
bool IsLocalName(std::string_view name) {
  return name == "localhost" || name == "[::1]" || name.starts_with("127.");
}

/// A number of the header that a browser sends when it comes back to a stream of events; -1 without one.
long long LastEvent(const httplib::Request& request) {
  const std::string text = request.get_header_value("Last-Event-ID");
  long long number = -1;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

class HttplibServer : public PageServer {
 public:
  HttplibServer(PageHub& hub, PageHub& sentences, const std::string& address, int port);
  ~HttplibServer() override {
    server_.stop();
    thread_.join();
  }
  int Port() const override { return port_; }

 private:
  void Protect(bool is_loopback);
  void AddPages();
  static void SendEvents(PageHub& hub, const httplib::Request& request, httplib::Response& response);

  PageHub& hub_;
  PageHub& sentences_;
  httplib::Server server_;
  socket_t socket_ = INVALID_SOCKET;  // that the server listens on
  int port_;
  std::thread thread_;
};

HttplibServer::HttplibServer(PageHub& hub, PageHub& sentences, const std::string& address, int port)
    : hub_(hub), sentences_(sentences) {
  server_.new_task_queue = [] { return new BoundedPool; };
  Protect(IsLoopback(address));
  AddPages();
  errno = 0;
  port_ = port == 0 ? server_.bind_to_any_port(address) : server_.bind_to_port(address, port) ? port : -1;
  if (port_ < 0) {
    throw Failure(ExitCode::failed, "cannot listen on " + HostAndPort(address, port) + ": " +
                                        std::strerror(errno) + "; --http chooses another port");
  }
  listen(socket_, kBacklog);  // the library's own is 5, and a browser opens 6 connections at a time
  thread_ = std::thread([this] { server_.listen_after_bind(); });
  while (!server_.is_running()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

void HttplibServer::Protect(bool is_loopback) {
  server_.set_socket_options([this](socket_t socket) {
    socket_ = socket;
    // Not so that a second server could share the port unseen, as the library has it.
    const int yes = 1;
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  });
  server_.set_keep_alive_max_count(1);
  server_.set_read_timeout(kTimeout);
  server_.set_write_timeout(kTimeout);
  server_.set_payload_max_length(kLongestBody);
  server_.set_default_headers({{"Content-Security-Policy", "default-src 'self'; frame-ancestors 'none'"},
                               {"X-Content-Type-Options", "nosniff"},
                               {"Referrer-Policy", "no-referrer"},
                               {"Cache-Control", "no-store"}});
  if (!is_loopback) return;
  server_.set_pre_routing_handler([](const httplib::Request& request, httplib::Response& response) {
    if (IsLocalName(HostName(request.get_header_value("Host")))) {
      return httplib::Server::HandlerResponse::Unhandled;
    }
    response.status = 403;
    response.set_content("This server answers to localhost alone.\n", "text/plain");
    return httplib::Server::HandlerResponse::Handled;
  });
}

void HttplibServer::AddPages() {
  for (const PageFile& file : PageFiles()) {
    server_.Get(file.path, [file](const httplib::Request&, httplib::Response& response) {
      response.set_content(file.content.data(), file.content.size(), file.type);
    });
  }
  server_.Get("/status", [this](const httplib::Request&, httplib::Response& response) {
    response.set_content(hub_.Status() + "\n", "application/json");
  });
  server_.Get("/history", [this](const httplib::Request&, httplib::Response& response) {
    response.set_content(hub_.History(), "application/x-ndjson");
  });
  server_.Get("/events", [this](const httplib::Request& request, httplib::Response& response) {
    SendEvents(hub_, request, response);
  });
  server_.Get("/sentences", [this](const httplib::Request& request, httplib::Response& response) {
    SendEvents(sentences_, request, response);
  });
}

void HttplibServer::SendEvents(PageHub& hub, const httplib::Request& request, httplib::Response& response) {
  const std::shared_ptr<PageHub::Reader> reader = hub.Join(LastEvent(request));
  if (!reader) {
    response.status = 503;
    response.set_content("Too many pages are open.\n", "text/plain");
    return;
  }
  response.set_chunked_content_provider("text/event-stream", [reader](std::size_t, httplib::DataSink& sink) {
    std::string events;
    const bool goes_on = reader->Take(events, kLongestSilence);
    if (events.empty()) events = ":\n\n";
    if (!goes_on) sink.done();
    return goes_on && sink.write(events.data(), events.size());
  });
}

}  // namespace

std::unique_ptr<PageServer> StartPageServer(PageHub& hub, PageHub& sentences, const std::string& address,
                                            int port) {
  return std::make_unique<HttplibServer>(hub, sentences, address, port);
}

}  // namespace host
