#include "simulator/gateway/Gateway.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <regex>

#include "simulator/support/Files.h"

namespace Simulator {
namespace {

namespace fs = std::filesystem;

constexpr char toolFolder[] = "/run/gateway/bin";
constexpr char toolPath[] = "/run/gateway/bin/sms";
constexpr char veldctlPath[] = "/run/gateway/bin/veldctl";
constexpr char toolLog[] = "/var/log/veld.log";
constexpr char mark[] = "/run/private-gateway";
constexpr double killSeconds = 10;

// Refuses to run on a real machine, whose /dev/log it would take. Creates the folders that the members need.
const char* prepare(const char* modemFolder) {
  if (!fs::exists(mark)) {
    std::fputs("simulator: this is a real machine; run me through simulator/private-gateway\n", stderr);
    std::exit(1);
  }
  const fs::path apiFolder = fs::path(LocalApiServer::socketPath).parent_path();
  for (const fs::path& folder : {fs::path(toolFolder), fs::path(toolLog).parent_path(), apiFolder})
    fs::create_directories(folder);
  close(open(toolLog, O_WRONLY | O_CREAT | O_CLOEXEC, 0640));  // as the daemon's unit creates it
  return modemFolder;
}

std::string path() {
  const char* const others = std::getenv("PATH");
  return std::string(toolFolder) + ":" + (others != nullptr ? others : "/usr/bin:/bin");
}

std::string quoted(const std::string& word) {
  return "'" + std::regex_replace(word, std::regex("'"), R"('\'')") + "'";
}

// Writes a script, because VELDCTL may contain a whole command line.
bool writeVeldctl(const std::string& program) {
  const char* const other = std::getenv("VELDCTL");
  const std::string command = other != nullptr ? other : quoted(program);
  return writeFile(veldctlPath, "#!/bin/sh\nexec " + command + " \"$@\"\n") && chmod(veldctlPath, 0755) == 0;
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
      tool_(options.tool.empty() ? options.buildFolder + "/sms" : options.tool),
      servesApi_(options.servesApi) {
  if (repair() && settings.setTimings("[30,60,300]") &&
      writeVeldctl(options.buildFolder + "/../veldctl/veldctl"))
    return;
  std::fprintf(stderr, "simulator: cannot bind %s and %s, or write to /run and /var\n",
               SyslogServer::socketPath, LocalApiServer::socketPath);
  std::exit(1);
}

Gateway::~Gateway() {
  repair();
  daemon.interrupted = false;
  if (daemon.stop()) return;
  daemon.signal(SIGKILL);
  daemon.wait(killSeconds, [this] { return !daemon.running(); });
}

void Gateway::runBeside(const std::string& command) {
  MessageFolders::create();
  program.start(command, path());
}

std::string Gateway::veldctl(const std::vector<std::string>& words) const {
  std::string command = "PATH=" + quoted(path()) + " veldctl";
  for (const std::string& word : words) command += " " + quoted(word);
  std::FILE* const pipe = popen((command + " 2>&1; s=$?; [ $s -eq 0 ] || echo status $s").c_str(), "r");
  if (pipe == nullptr) return "";
  std::string output;
  char piece[4096];
  while (std::fgets(piece, sizeof(piece), pipe) != nullptr) output += piece;
  pclose(pipe);
  return output;
}

void Gateway::setToolThere(bool there) {
  if (there == fs::exists(toolPath)) return;  // a new link would leave a moment without the tool
  const int result = there ? symlink(tool_.c_str(), toolPath) : unlink(toolPath);
  if (result != 0) std::perror(toolPath);
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
  const bool apiThere = !is("api") || !servesApi_ || api.listening() || api.listen();
  const bool syslogThere = !is("syslog") || syslog.listening() || syslog.listen();
  return apiThere && syslogThere;
}

std::vector<std::string> Gateway::faults() {
  std::vector<std::string> lines;
  if (servesApi_ && !api.listening()) lines.emplace_back("api: no socket, or nothing listens on it");
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
  if (const std::string operation = modem.hangingOperation(); !operation.empty())
    return "the tool hangs in \"" + operation + "\"";
  return api.silentSeconds() ? "the API does not answer" : "";
}

unsigned Gateway::hangSeconds() const {
  return modem.hangingOperation().empty() ? api.silentSeconds().value_or(0) : modem.hangingSeconds();
}

}  // namespace Simulator
