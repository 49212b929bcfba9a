#include "simulator/gateway/Gateway.h"

#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

namespace Simulator {
namespace {

namespace fs = std::filesystem;

constexpr char toolFolder[] = "/run/gateway/bin";
constexpr char toolPath[] = "/run/gateway/bin/sms";
constexpr char mark[] = "/run/private-gateway";
constexpr double killSeconds = 10;

// On a machine that is nobody's playground this program would take /dev/log away from syslog. The folders
// exist before the first object binds or maps a file in them.
const char* prepare(const char* modemFolder) {
  if (!fs::exists(mark)) {
    std::fputs("simulator: this machine is a real one; run me with simulator/private-gateway\n", stderr);
    std::exit(1);
  }
  for (const char* folder : {toolFolder, "/var/log"}) fs::create_directories(folder);
  return modemFolder;
}

}  // namespace

Gateway::Gateway(const Options& options)
    : modem_(prepare(Modem::storeFolder)),
      api_([this] { return settings_.value(); }),
      clock_(options.hold),
      folders_(clock_),
      daemon_({options.program, options.buildFolder + "/libgateway-clock.so", toolFolder}, clock_,
              [this] { return !hang().empty(); }),
      responder_(api_, folders_, daemon_),
      tool_(options.buildFolder + "/sms"),
      veldctl_(options.buildFolder + "/../veldctl/veldctl") {
  if (!repair() || !settings_.setTimings("[30,60,300]")) {
    std::fprintf(stderr, "simulator: cannot bind %s and %s\n", SyslogServer::socketPath,
                 LocalApiServer::socketPath);
    std::exit(1);
  }
}

Gateway::~Gateway() {
  repair();
  daemon_.resume();
  if (daemon_.stop()) return;
  daemon_.signal(SIGKILL);
  daemon_.wait(killSeconds, [this] { return !daemon_.running(); });
}

std::string Gateway::veldctl(const std::vector<std::string>& words) const {
  const char* const other = std::getenv("VELDCTL");
  std::string command = std::string("PATH=") + toolFolder + ":$PATH " + (other != nullptr ? other : veldctl_);
  for (const std::string& word : words) {
    command += " '";
    for (const char c : word) command += c == '\'' ? std::string("'\\''") : std::string(1, c);
    command += "'";
  }
  std::FILE* const pipe = popen((command + " 2>&1; s=$?; [ $s -eq 0 ] || echo status $s").c_str(), "r");
  if (pipe == nullptr) return "";
  std::string said;
  char piece[4096];
  while (std::fgets(piece, sizeof(piece), pipe) != nullptr) said += piece;
  pclose(pipe);
  return said;
}

void Gateway::setToolThere(bool there) {
  if (there == toolThere()) return;  // never gone for the moment in which it is wanted
  if ((there ? symlink(tool_.c_str(), toolPath) : unlink(toolPath)) != 0) std::perror(toolPath);
}

bool Gateway::toolThere() const { return fs::exists(toolPath); }

bool Gateway::repair() {
  var_.free();
  tmp_.free();
  setToolThere(true);
  modem_.clearFaults();
  api_.setFault(ApiFault::None, 0);
  const bool syslogThere = syslog_.listening() || syslog_.listen();
  return (api_.listening() || api_.listen()) && syslogThere;
}

std::vector<std::string> Gateway::faults() {
  std::vector<std::string> lines;
  if (!api_.listening()) lines.emplace_back("api: no socket, or nobody listens");
  if (!api_.fault().empty()) lines.push_back("api: " + api_.fault());
  if (!toolThere()) lines.emplace_back("tool: gone");
  for (const std::string& each : modem_.faults()) lines.push_back("tool: " + each);
  if (!syslog_.listening()) lines.emplace_back("syslog: gone");
  if (var_.full()) lines.emplace_back("disk: full");
  if (tmp_.full()) lines.emplace_back("tmp: full");
  for (const std::string& number : modem_.refused()) lines.push_back("refused: " + number);
  return lines;
}

std::string Gateway::hang() const {
  const auto text = [](const std::string& what, unsigned seconds) {
    return what + " for " + std::to_string(seconds) + " s (\"repair\" ends that)";
  };
  if (const std::string operation = modem_.hangingOperation(); !operation.empty())
    return text("the tool hangs in \"" + operation + "\"", modem_.hangingSeconds());
  if (const std::optional<unsigned> seconds = api_.silentSeconds())
    return text("the API does not answer", *seconds);
  return "";
}

}  // namespace Simulator
