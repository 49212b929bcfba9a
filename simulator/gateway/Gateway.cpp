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
constexpr char mark[] = "/run/private-gateway";  // exists only in a private gateway
constexpr double killSeconds = 10;

[[noreturn]] void fail(const std::string& problem) {
  std::fprintf(stderr, "simulator: %s\n", problem.c_str());
  std::exit(1);
}

// Creates the folders that Gateway's members need. Fails on a real machine, to protect its /dev/log.
const char* prepare(const char* modemFolder) {
  if (!fs::exists(mark)) fail("this is a real machine; start the simulator with simulator/private-gateway");
  const fs::path apiFolder = fs::path(LocalApiServer::socketPath).parent_path();
  for (const fs::path& folder : {fs::path(toolFolder), fs::path(toolLog).parent_path(), apiFolder})
    fs::create_directories(folder);
  close(
      open(toolLog, O_WRONLY | O_CREAT | O_CLOEXEC, 0640));  // on a real gateway the daemon's unit creates it
  return modemFolder;
}

std::string path() {
  const char* const others = std::getenv("PATH");
  return std::string(toolFolder) + ":" + (others != nullptr ? others : "/usr/bin:/bin");
}

std::string quoted(const std::string& word) {
  return "'" + std::regex_replace(word, std::regex("'"), R"('\'')") + "'";
}

// Creates veldctl as a shell script, because the variable VELDCTL may contain a whole command line.
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
  if (!repair()) fail("cannot bind the socket of the syslog or of the API");
  if (!settings.setTimings("[30,60,300]") || !writeVeldctl(options.buildFolder + "/../veldctl/veldctl"))
    fail("cannot write to /run");
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
  if (there == fs::exists(toolPath)) return;  // replacing the link would remove the tool for a moment
  const int result = there ? symlink(tool_.c_str(), toolPath) : unlink(toolPath);
  if (result != 0) std::perror(toolPath);
}

bool Gateway::repair(const std::string& part) {
  const auto includes = [&part](const char* one) { return part == "all" || part == one; };
  if (includes("disk")) var.free();
  if (includes("tmp")) tmp.free();
  if (includes("tool")) {
    setToolThere(true);
    modem.clearFaults();
  }
  bool good = true;
  if (includes("api")) api.setFault(ApiFault::None, 0);
  if (includes("api") && servesApi_ && !api.listening()) good = api.listen();
  if (includes("syslog") && !syslog.listening()) good = syslog.listen() && good;
  return good;
}

std::vector<std::string> Gateway::faults() {
  std::vector<std::string> lines;
  if (servesApi_ && !api.listening()) lines.emplace_back("api: gone, or refuses connections");
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
