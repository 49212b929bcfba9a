#include "simulator/page/PageServer.h"

#include <sys/socket.h>

#include <chrono>

#include "simulator/page/Panes.h"
#include "simulator/support/Files.h"

namespace Simulator {
namespace {
constexpr char loopback[] = "127.0.0.1";
constexpr std::chrono::milliseconds interval{100};  // the time between two checks for new data
constexpr std::size_t largestCommand = 64 << 10;
constexpr std::size_t linesAtOnce = 500;
constexpr std::size_t threadCount = 24;
constexpr unsigned mostFollowers = 16;  // the limit of open pages; each page needs a thread
constexpr int forbidden = 403;

// The page may load data only from this server. No other page may embed this page.
const httplib::Headers defaultHeaders{
    {"Content-Security-Policy", "default-src 'self'; frame-ancestors 'none'"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"X-Content-Type-Options", "nosniff"},
    {"Cache-Control", "no-store"}};

// The files of the page. listen() reads each file once, because a later open() sometimes fails under proot.
constexpr struct {
  const char *path, *file, *type;
} site[] = {{"/", "/index.html", "text/html"},
            {"/app.js", "/app.js", "text/javascript"},
            {"/style.css", "/style.css", "text/css"},
            {"/icon.svg", "/icon.svg", "image/svg+xml"}};

// httplib's default would also set SO_REUSEPORT. Two gateways could then use the same port.
void setSocketOptions(int socket) {
  const int yes = 1;
  setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
}

std::string event(const std::string& name, const std::string& line) {
  return "event: " + name + "\ndata: " + line + "\n\n";
}
}  // namespace

struct PageServer::Sent {
  std::map<std::string, std::string> panes;
  std::size_t lines = 0;  // the number of log lines
};

PageServer::PageServer(Interpreter& interpreter) : interpreter_(interpreter) {}

PageServer::~PageServer() {
  stop_ = true;
  interpreter_.gateway().daemon.interrupted = true;  // ends the commands that wait
  if (watcher_.joinable()) watcher_.join();
  if (listener_.joinable()) {
    server_.stop();
    listener_.join();
  }
}

bool PageServer::listen(int port) {
  server_.new_task_queue = [] { return new httplib::ThreadPool(threadCount); };
  server_.set_socket_options(setSocketOptions);
  server_.set_payload_max_length(largestCommand);
  server_.set_default_headers(defaultHeaders);
  addHandlers();
  if (port == 0) port_ = server_.bind_to_any_port(loopback);
  if (port != 0 && server_.bind_to_port(loopback, port)) port_ = port;
  if (port_ <= 0) return false;
  watcher_ = std::thread([this] { watch(); });
  listener_ = std::thread([this] { server_.listen_after_bind(); });
  while (!server_.is_running()) std::this_thread::yield();
  return true;
}

std::string PageServer::address() const {
  return std::string("http://") + loopback + ":" + std::to_string(port_) + "/";
}

void PageServer::addHandlers() {
  using Handled = httplib::Server::HandlerResponse;
  server_.set_pre_routing_handler([this](const httplib::Request& request, httplib::Response& response) {
    if (isOwn(request)) return Handled::Unhandled;
    response.status = forbidden;
    response.set_content("This gateway answers only requests of its page, " + address() + "\n", "text/plain");
    return Handled::Handled;
  });
  for (const auto& part : site) {
    const std::string text = readFile(std::string(SITE_FOLDER) + part.file);
    server_.Get(part.path, [text, type = part.type](const httplib::Request&, httplib::Response& response) {
      response.set_content(text, type);
    });
  }
  server_.Post("/command", [this](const httplib::Request& request, httplib::Response& response) {
    const Answer answer = interpreter_.execute(request.body);
    response.set_content(toLine(object({{"good", answer.good}, {"text", answer.text}})), "application/json");
  });
  server_.Get("/events", [this](const httplib::Request&, httplib::Response& response) { follow(response); });
}

bool PageServer::isOwn(const httplib::Request& request) const {
  const std::string host = request.get_header_value("Host");
  const std::string port = ":" + std::to_string(port_);
  if (host != loopback + port && host != "localhost" + port && host != "[::1]" + port) return false;
  // A browser sends "same-origin" for a request of this page, and "none" for an address that a person types.
  const std::string site = request.get_header_value("Sec-Fetch-Site");
  if (!site.empty() && site != "same-origin" && site != "none") return false;
  const bool onlyReads = request.method == "GET" || request.method == "HEAD";
  return onlyReads || request.get_header_value("Origin") == "http://" + host;
}

void PageServer::follow(httplib::Response& response) {
  if (++followers_ > mostFollowers) {
    --followers_;
    response.set_content("retry: 1000\n\n", "text/event-stream");  // the browser asks again in a second
    return;
  }
  response.set_chunked_content_provider(
      "text/event-stream",
      [this, sent = Sent()](std::size_t, httplib::DataSink& sink) mutable { return sendNews(sent, sink); },
      [this](bool) { --followers_; });
}

// Sends the changes since the last call. Waits if there are none. Returns false to end the connection.
bool PageServer::sendNews(Sent& sent, httplib::DataSink& sink) {
  std::string news;
  Json::Value log(Json::arrayValue);
  for (const SyslogServer::Line& line : interpreter_.gateway().syslog.lines(sent.lines)) {
    if (log.size() == linesAtOnce) break;
    ++sent.lines;
    log.append(object({{"level", SyslogServer::levelNames[line.level]}, {"text", line.text}}));
  }
  if (!log.empty()) news += event("log", toLine(log));
  std::unique_lock lock(mutex_);
  for (const auto& [name, line] : panes_) {
    if (sent.panes[name] == line) continue;
    sent.panes[name] = line;
    news += event(name, line);
  }
  lock.unlock();
  if (news.empty()) std::this_thread::sleep_for(interval);
  return !stop_ && (news.empty() || sink.write(news.data(), news.size()));
}

void PageServer::watch() {
  Panes panes(interpreter_);
  while (!stop_) {
    const std::map<std::string, std::string> now = panes.read();
    std::unique_lock lock(mutex_);
    panes_ = now;
    lock.unlock();
    std::this_thread::sleep_for(interval);
  }
}
}  // namespace Simulator
