#include "simulator/gateway/LocalApiServer.h"

#include <httplib.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>

#include "simulator/support/Files.h"
#include "simulator/support/Waiting.h"

namespace Simulator {
namespace {
constexpr char settingsPath[] = "/api/sms";
constexpr char commandFolder[] = "/api/command/";
constexpr char jsonType[] = "application/json";
constexpr int anyPort = 80;  // the library requires a port, although a UNIX-domain socket has no port
constexpr double startSeconds = 10;

// The last path component of each command. This list is independent, to reveal mistakes in the daemon's.
constexpr char knownCommands[] =
    " sms_restart checkin_to_quillo_sms set_rm_through_sms set_cellular_through_sms send_apn_through_sms "
    "send_cellularstatus_sms send_radiostatus_sms send_ethernetstatus_sms send_wanstatus_sms "
    "send_wifistatus_sms do_ping_through_sms send_serialstatus_sms send_geoposition_sms lns_restart_sms "
    "sms_send send_wanips_sms ";

bool isKnown(const std::string& path) {
  const std::size_t length = sizeof commandFolder - 1;
  return path.compare(0, length, commandFolder) == 0 &&
         std::strstr(knownCommands, (" " + path.substr(length) + " ").c_str()) != nullptr;
}

Json::Value envelope(unsigned code, const Json::Value& result) {
  return object({{"code", code}, {"result", result}});
}

// Refuses additional members. The daemon does not escape quotes, so a text with quotes can add members.
bool isCommand(const Json::Value& body) {
  return body.isObject() && body.size() == 2 && body["recipients"].isArray() && body["args"].isArray();
}

void closeEarly(httplib::Response& response) {
  response.set_content_provider(1000, jsonType, [](std::size_t, std::size_t, httplib::DataSink& sink) {
    constexpr char beginning[] = "{\"code\": 200, \"res";
    sink.write(beginning, sizeof beginning - 1);
    return false;
  });
}
}  // namespace

LocalApiServer::LocalApiServer(std::function<Json::Value()> settings) : settings_(std::move(settings)) {}

LocalApiServer::~LocalApiServer() { close(false); }

bool LocalApiServer::listen() {
  close(false);
  std::filesystem::create_directories(std::filesystem::path(socketPath).parent_path());
  closing_ = false;
  server_ = std::make_unique<httplib::Server>();
  server_->set_address_family(AF_UNIX);
  server_->set_keep_alive_max_count(1);
  const auto handler = [this](const httplib::Request& request, httplib::Response& response) {
    handle(request, response);
  };
  server_->Get(".*", handler);
  server_->Post(".*", handler);
  if (!server_->bind_to_port(socketPath, anyPort)) {
    server_.reset();
    return false;
  }
  thread_ = std::thread([this] { server_->listen_after_bind(); });
  return waitUntil(startSeconds, [this] { return server_->is_running(); });
}

void LocalApiServer::close(bool leaveSocket) {
  if (server_) {
    std::unique_lock lock(mutex_);
    closing_ = true;
    lock.unlock();
    repaired_.notify_all();
    server_->stop();
    thread_.join();
    server_.reset();
  }
  if (!leaveSocket) unlink(socketPath);
}

void LocalApiServer::setFault(ApiFault fault, unsigned code) {
  const std::lock_guard lock(mutex_);
  fault_ = fault;
  faultCode_ = code;
  repaired_.notify_all();
}

std::string LocalApiServer::fault() const {
  const std::lock_guard lock(mutex_);
  const std::string code = fault_ == ApiFault::Code ? " " + std::to_string(faultCode_) : "";
  return faultNames[static_cast<int>(fault_)] + code;
}

std::vector<LocalApiServer::Request> LocalApiServer::requests(std::size_t first) const {
  const std::lock_guard lock(mutex_);
  return {requests_.begin() + static_cast<std::ptrdiff_t>(first), requests_.end()};
}

std::optional<unsigned> LocalApiServer::silentSeconds() const {
  const std::lock_guard lock(mutex_);
  if (fault_ != ApiFault::Silent || waiting_ == 0) return std::nullopt;
  const std::chrono::duration<double> waited = std::chrono::steady_clock::now() - waitsSince_;
  return static_cast<unsigned>(waited.count());
}

void LocalApiServer::handle(const httplib::Request& request, httplib::Response& response) {
  const Request kept{request.method, request.path, request.body};
  std::unique_lock lock(mutex_);
  const std::size_t number = requests_.size();
  requests_.push_back(kept);
  ++waiting_;
  waitsSince_ = std::chrono::steady_clock::now();
  repaired_.wait(lock, [this] { return closing_ || fault_ != ApiFault::Silent; });
  --waiting_;
  const ApiFault fault = fault_;
  const unsigned faultCode = faultCode_;
  lock.unlock();

  unsigned code = 0;
  if (fault == ApiFault::Garbage) {
    response.set_content("<html>\xff\x01 this is not JSON", "text/html");
  } else if (fault == ApiFault::Close) {
    closeEarly(response);
  } else {
    const Json::Value json = fault == ApiFault::Code ? envelope(faultCode, Json::nullValue) : answer(kept);
    response.set_content(toLine(json), jsonType);
    code = json["code"].asUInt();
  }
  lock.lock();
  requests_[number].answered = true;
  requests_[number].code = code;
}

Json::Value LocalApiServer::answer(const Request& request) const {
  if (request.method == "GET")
    return request.path == settingsPath ? envelope(200, settings_()) : envelope(404, "no such resource");
  if (!isKnown(request.path)) return envelope(404, "no such command");
  Json::Value body;
  if (!readJson(request.body, body) || !isCommand(body)) return envelope(400, "the body is not a command");
  return envelope(200, Json::nullValue);
}
}  // namespace Simulator
