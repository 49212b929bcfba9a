#include "simulator/gateway/Gateway.h"

#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <regex>

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
    : modem(prepare(Modem::storeFolder)),
      api([this] { return settings.value(); }),
      clock(options.hold),
      folders(clock),
      daemon({options.program, options.buildFolder + "/libgateway-clock.so", toolFolder}, clock,
             [this] { return !hang().empty(); }),
      responder(api, folders, daemon),
      tool_(options.buildFolder + "/sms"),
      veldctl_(options.buildFolder + "/../veldctl/veldctl") {
  if (!repair() || !settings.setTimings("[30,60,300]")) {
    std::fprintf(stderr, "simulator: cannot bind %s and %s\n", SyslogServer::socketPath,
                 LocalApiServer::socketPath);
    std::exit(1);
  }
}

Gateway::~Gateway() {
  repair();
  daemon.interrupted = false;
  if (daemon.stop()) return;
  daemon.signal(SIGKILL);
  daemon.wait(killSeconds, [this] { return !daemon.running(); });
}

std::string Gateway::veldctl(const std::vector<std::string>& words) const {
  const char* const other = std::getenv("VELDCTL");
  std::string command = std::string("PATH=") + toolFolder + ":$PATH " + (other != nullptr ? other : veldctl_);
  for (const std::string& word : words)
    command += " '" + std::regex_replace(word, std::regex("'"), R"('\'')") + "'";
  std::FILE* const pipe = popen((command + " 2>&1; s=$?; [ $s -eq 0 ] || echo status $s").c_str(), "r");
  if (pipe == nullptr) return "";
  std::string said;
  char piece[4096];
  while (std::fgets(piece, sizeof(piece), pipe) != nullptr) said += piece;
  pclose(pipe);
  return said;
}

void Gateway::setToolThere(bool there) {
  if (there == fs::exists(toolPath)) return;  // never gone for the moment in which it is wanted
  if ((there ? symlink(tool_.c_str(), toolPath) : unlink(toolPath)) != 0) std::perror(toolPath);
}

bool Gateway::repair(const std::string& part) {
  const auto is = [&part](const char* one) { return part == "all" || part == one; };
  if (is("disk")) var.free();
  if (is("tmp")) tmp.free();
  if (is("tool")) {
    setToolThere(true);
    modem.clearFaults();
  }
  if (is("api")) api.setFault(ApiFault::None, 0);
  const bool syslogThere = !is("syslog") || syslog.listening() || syslog.listen();
  return (!is("api") || api.listening() || api.listen()) && syslogThere;
}

std::vector<std::string> Gateway::faults() {
  std::vector<std::string> lines;
  if (!api.listening()) lines.emplace_back("api: no socket, or nobody listens");
  if (!api.fault().empty()) lines.push_back("api: " + api.fault());
  if (!fs::exists(toolPath)) lines.emplace_back("tool: gone");
  for (const std::string& each : modem.faults()) lines.push_back("tool: " + each);
  if (!syslog.listening()) lines.emplace_back("syslog: gone");
  if (var.full()) lines.emplace_back("disk: full");
  if (tmp.full()) lines.emplace_back("tmp: full");
  for (const std::string& number : modem.refused()) lines.push_back("refused: " + number);
  return lines;
}

std::string Gateway::hang() const {
  const auto text = [](const std::string& what, unsigned seconds) {
    return what + " for " + std::to_string(seconds) + " s (\"repair\" ends that)";
  };
  if (const std::string operation = modem.hangingOperation(); !operation.empty())
    return text("the tool hangs in \"" + operation + "\"", modem.hangingSeconds());
  if (const std::optional<unsigned> seconds = api.silentSeconds())
    return text("the API does not answer", *seconds);
  return "";
}

}  // namespace Simulator
