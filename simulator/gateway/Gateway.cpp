#include "simulator/gateway/Gateway.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "simulator/support/Files.h"

namespace Simulator {
namespace {

namespace fs = std::filesystem;

constexpr char toolFolder[] = "/run/gateway/bin";
constexpr char toolPath[] = "/run/gateway/bin/sms";
constexpr char messageStore[] = "/var/config/sms/";
constexpr char outbox[] = "/var/config/sms/outbox/";
constexpr char mark[] = "/run/private-gateway";
constexpr int accepted = 200;
constexpr char fillerName[] = "/filler";
constexpr unsigned long long largestPrivate = 256ULL << 20;
constexpr double passSeconds = 60;
constexpr double stopSeconds = 10;
constexpr double signalSeconds = 0.3;

bool waitUntil(double seconds, const std::function<bool()>& done) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
  while (!done()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    usleep(1000);
  }
  return true;
}

// On a machine that is nobody's playground this program would take /dev/log away from syslog. The folders
// exist before the first object binds or maps a file in them.
const char* prepare(const char* modemFolder) {
  if (!fs::exists(mark)) {
    std::fputs("simulator: this machine is a real one; run me with simulator/private-gateway\n", stderr);
    std::exit(1);
  }
  for (const char* folder : {toolFolder, "/var/log", outbox}) fs::create_directories(folder);
  return modemFolder;
}

}  // namespace

Gateway::Gateway(const Options& options)
    : modem_(prepare(Modem::storeFolder)),
      api_([this] { return settings_.value(); }),
      clock_(options.hold),
      daemon_({options.program, options.buildFolder + "/libgateway-clock.so", toolFolder}),
      tool_(options.buildFolder + "/sms") {
  if (!repairAll() || !settings_.setTimings("[30,60,300]")) {
    std::fprintf(stderr, "simulator: cannot bind %s and %s\n", SyslogServer::socketPath,
                 LocalApiServer::socketPath);
    std::exit(1);
  }
}

Gateway::~Gateway() {
  repairAll();
  if (stop()) return;
  daemon_.signal(SIGKILL);
  waitUntil(stopSeconds, [this] { return !daemon_.running(); });
}

bool Gateway::start(std::string& problem) {
  if (!daemon_.running()) clock_.reset();
  return daemon_.start(problem);
}

bool Gateway::stop() {
  const auto ended = [this] { return !daemon_.running(); };
  daemon_.signal(SIGTERM);
  if (waitUntil(signalSeconds, ended)) return true;
  // A signal that comes just before the sleep does not end it; on a gateway five seconds do.
  clock_.grant();
  return waitUntil(stopSeconds, ended);
}

void Gateway::grantPass() { clock_.grant(); }

Gateway::Passed Gateway::awaitSleep(double seconds) {
  waitUntil(seconds, [this] { return clock_.sleeping() || !daemon_.running(); });
  return !daemon_.running() ? Passed::Ended : clock_.sleeping() ? Passed::Yes : Passed::NotYet;
}

Gateway::Passed Gateway::pass() {
  if (const Passed before = awaitSleep(passSeconds); before != Passed::Yes) return before;
  const std::uint32_t begun = clock_.begun();
  clock_.grant();
  const bool slept = clock_.waitForSleep(begun, passSeconds, [this] { return !daemon_.running(); });
  return slept ? Passed::Yes : daemon_.running() ? Passed::NotYet : Passed::Ended;
}

std::size_t Gateway::release() {
  const std::size_t count = held_.size();
  for (const Part& part : held_) modem_.receive(part.first, part.second);
  held_.clear();
  return count;
}

std::string Gateway::carryOut() {
  std::string done;
  const std::vector<LocalApiServer::Request> requests = api_.requests();
  for (; carriedOut_ < requests.size(); ++carriedOut_) {
    const LocalApiServer::Request& request = requests[carriedOut_];
    if (request.code == 0) break;  // not before it is answered
    Json::Value body;
    if (request.method != "POST" || request.code != accepted || !readJson(request.body, body)) continue;
    const bool reboot = request.path == LocalApiServer::rebootPath;
    std::string problem;
    if (reboot && !(stop() && start(problem))) {
      done += "The gateway cannot reboot: " + problem + "\n";
      continue;
    }
    Json::Value record;
    record["recipient"] = body["recipients"][0];
    record["message"] =
        reboot ? "The gateway has rebooted." : request.path.substr(request.path.rfind('/') + 1) + ": done";
    record["retries"] = 3;
    std::string guid;
    if (!queue(record, guid)) continue;
    done += (reboot ? "The gateway has rebooted" : "The gateway has carried out " + request.path) +
            ", and answers as " + guid + ".\n";
  }
  return done;
}

const std::vector<std::string>& Gateway::boxes() {
  static const std::vector<std::string> names{"received", "sending", "sent", "failed"};
  return names;
}

std::string Gateway::folderOf(const std::string& box) {
  return messageStore + std::string(box == "received" ? "inbox/" : "outbox/") + box;
}

bool Gateway::queue(Json::Value record, std::string& guid) {
  const std::time_t now = clock_.now();
  char second[15];
  std::strftime(second, sizeof second, "%Y%m%d%H%M%S", std::localtime(&now));
  const auto taken = [&guid] {
    for (const std::string& box : boxes()) {
      if (fs::exists(folderOf(box) + "/" + guid)) return true;
    }
    return false;
  };
  unsigned ordinal = 0;
  do {
    char number[12];
    std::snprintf(number, sizeof number, "%02u", ordinal++);
    guid = std::string(second) + number;
  } while (taken());
  record["guid"] = guid;
  // The daemon takes any file in the folder for a whole record: it is written beside it and moved in.
  fs::create_directories(folderOf("sending"));
  const std::string beside = outbox + guid;
  if (!writeFile(beside, toLine(record))) return false;
  return std::rename(beside.c_str(), (folderOf("sending") + "/" + guid).c_str()) == 0;
}

std::vector<Json::Value> Gateway::records(const std::string& box) {
  std::vector<Json::Value> all;
  for (const std::string& name : listFolder(folderOf(box))) {
    const std::string text = readFile(folderOf(box) + "/" + name);
    Json::Value record;
    all.push_back(readJson(text, record) ? record : Json::Value(text));
  }
  return all;
}

void Gateway::setToolThere(bool there) {
  unlink(toolPath);
  if (there && symlink(tool_.c_str(), toolPath) != 0) std::perror(toolPath);
}

bool Gateway::toolThere() const { return fs::exists(toolPath); }

bool Gateway::setFull(const std::string& folder, bool full) {
  const std::string filler = folder + fillerName;
  unlink(filler.c_str());
  struct statvfs disk {};
  if (!full) return true;
  if (statvfs(folder.c_str(), &disk) != 0) return false;
  const unsigned long long room = static_cast<unsigned long long>(disk.f_bavail) * disk.f_frsize;
  if (room > largestPrivate) return false;
  const int file = open(filler.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  const std::vector<char> block(disk.f_frsize);
  while (file >= 0 && write(file, block.data(), block.size()) > 0) continue;
  if (file >= 0) close(file);
  return file >= 0;
}

bool Gateway::isFull(const std::string& folder) { return fs::exists(folder + fillerName); }

bool Gateway::repairAll() {
  for (const char* folder : {"/var", "/tmp"}) setFull(folder, false);
  setToolThere(true);
  modem_.clearFaults();
  api_.setFault(ApiFault::None, 0);
  const bool syslogThere = syslog_.listening() || syslog_.listen();
  return (api_.listening() || api_.listen()) && syslogThere;
}

}  // namespace Simulator
