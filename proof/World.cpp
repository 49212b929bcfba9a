#include "proof/World.h"

#include <sys/mount.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <set>

#include "simulator/modem/GsmEncoder.h"
#include "simulator/support/Files.h"

namespace {
namespace fs = std::filesystem;
using Simulator::Gateway;
using Simulator::MessageFolders;

constexpr std::time_t newYear = 1767225600;  // 2026-01-01; each world has the same guids and dates
constexpr double hangSeconds = 60;
constexpr std::size_t headerSize = 28;  // of the header of a part: seven octets, printed as \xHH

// The path of a built program.
fs::path built(const std::string& program) {
  return fs::read_symlink("/proc/self/exe").parent_path().parent_path() / program;
}

// Flushes a file, or with "-f" its file system, so that it outlasts a power cut.
void flush(const std::string& what) {
  if (std::system(("sync " + what).c_str()) != 0) std::abort();
}

// Removes the files of an earlier world, but not folders that are mount points.
void clean() {
  for (const std::string folder : {"/var/config", "/var/log", "/run/modem", "/run/gateway", "/tmp/sms"})
    if (fs::exists(folder))
      for (const fs::directory_entry& entry : fs::directory_iterator(folder)) fs::remove_all(entry);
  if (fs::exists("/var/config")) flush("-f /var/config");
}
}  // namespace

World::World(unsigned limit) : ledger(limit) {
  clean();
  const char* const other = std::getenv("VELD");
  const std::string program = other != nullptr ? other : built("daemon/veld").string();
  setenv("TZ", "UTC", 1);
  gateway_ = std::make_unique<Gateway>(Gateway::Options{program, built("simulator"), true});
  gateway_->clock.set(newYear);
  gateway_->settings.set("receivedLimit", limit);
  gateway_->settings.set("sentLimit", limit);
  gateway_->modem.setRefused(refused, true);
  if (!gateway_->settings.setTimings("[5]")) std::abort();
}

std::size_t World::enter(const std::string& text, const std::string& sender, unsigned parts) {
  Simulator::GsmEncoder encoder;
  if (!encoder.encode(text, {false, parts, nextReference_++}).empty()) std::abort();
  std::vector<std::pair<std::string, std::string>> entered;
  entered.reserve(encoder.parts.size());
  for (const std::string& part : encoder.parts)
    entered.emplace_back(part, encoder.parts.size() > 1 ? part.substr(headerSize) : text);
  const bool isCommand = text.find('#') != std::string::npos && sender == friendly;
  const std::size_t message = ledger.enterIncoming(text, isCommand ? Kind::Command : Kind::Text, entered);
  deliveries_[message] = {sender, encoder.parts};
  return message;
}

void World::deliver(std::size_t message, std::size_t part) {
  const auto& [sender, parts] = deliveries_[message];
  gateway_->modem.receive(sender, parts[part]);
  ledger.arrived(message, part);
}

void World::receive(const std::string& text, const std::string& sender, unsigned parts) {
  const std::size_t message = enter(text, sender, parts);
  for (std::size_t part = 0; part < deliveries_[message].second.size(); ++part) deliver(message, part);
}

void World::queue(const std::string& text, const std::string& number, unsigned retries) {
  const std::string guid = gateway_->folders.queue(number, text, retries);
  if (guid.empty()) return;
  flush(MessageFolders::pathOf("sending") + "/" + guid);
  ledger.enterQueued(text, number, number == refused);
}

void World::start() {
  if (!lives) return;
  const std::string problem = daemon().start();
  look("a daemon starts. " + problem);
  lives = problem.empty() && awaitSleep();
}

void World::pass(unsigned count) {
  lives = lives && awaitSleep();
  for (unsigned i = 0; lives && i < count; ++i) {
    beginPass();
    lives = awaitSleep();
  }
}

void World::repair() {
  lives = gateway_->repair() && awaitSleep() && lives;
  faults = 0;
}

void World::run(const Steps& steps, const std::string& name) {
  running_ = name;
  for (const Step& step : steps)
    if (lives) step(*this);
  running_.clear();
}

void World::stop() {
  if (!lives) return;
  lives = daemon().stop() && daemon().ending() == "0";
  look("SIGTERM, ended with " + daemon().ending());
}

void World::kill(bool group) {
  lives = lives && daemon().running();
  if (!lives) return;
  ::kill(group ? -daemon().pid() : daemon().pid(), SIGKILL);
  gateway_->modem.clearFaults();
  lives = awaitEnd();
}

bool World::awaitSleep() {
  const bool sleeps = daemon().awaitSleep(hangSeconds) == Simulator::DaemonProcess::Passed::Yes;
  look(sleeps ? "the end of a pass" : "a pass without an end, " + daemon().ending());
  return sleeps;
}

bool World::reach(const std::string& operation) {
  gateway_->modem.setFault(operation, Simulator::ToolFault::Hang, 1);
  beginPass();
  return awaitHang([&] { return gateway_->modem.hangingOperation() == operation; });
}

bool World::awaitHang(const std::function<bool()>& hangs) {
  daemon().wait(hangSeconds, [&] { return hangs() || gateway_->clock.sleeping() || !daemon().running(); });
  return hangs();
}

bool World::awaitEnd() {
  const bool ended = daemon().wait(hangSeconds, [this] { return !daemon().running(); });
  while (ended && waitpid(-1, nullptr, 0) > 0) continue;
  look("the daemon has ended, with " + daemon().ending());
  ledger.died();
  return ended;
}

void World::look(const std::string& note) {
  Ledger::News news;
  news.faults = faults;
  news.note = running_ + (running_.empty() ? "" : ": ") + note;
  for (const std::string& path : ownFiles())
    news.note += "\n    kept " + path + ": " + Simulator::readFile(path);
  for (const auto& line : gateway_->syslog.lines(logLines_)) news.lines.push_back(line.text);
  const auto requests = gateway_->api.requests(requests_);
  for (const auto& request : requests)
    if (request.method == "POST") news.posts.push_back(request.body);
  logLines_ += news.lines.size();
  requests_ += requests.size();
  ledger.observe(news);
}

Findings World::liveOn() {
  pass(settlingPasses);
  receive("came in afterwards");
  queue("was queued afterwards");
  pass();
  return lives ? settle() : Findings{{"hang: after the fault, " + daemon().ending()}};
}

Findings World::settle() {
  look("the end");
  Findings findings = ledger.settle(gateway_->modem.sent());
  for (const std::string& path : ownFiles()) findings.push_back({"left: " + path});
  return findings;
}

bool World::report(const std::string& what, const std::string& details) {
  const std::string unknown = "outside of every window";
  std::ofstream file(details);
  std::map<std::string, unsigned> counts;
  for (const Ledger::Finding& finding : settle()) {
    ++counts[finding.window != nullptr ? finding.window->name : unknown];
    if (finding.window != nullptr) continue;
    std::cout << what << ": " << finding.text << "\n";
    file << finding.text << "\n" << finding.history << "\n";
  }
  std::cout << what << ": " << ledger.entered() << " messages";
  for (const auto& [name, number] : counts) std::cout << "; " << number << " " << name;
  std::cout << std::endl;
  return counts.count(unknown) == 0;
}

std::vector<std::string> World::ownFiles() {
  std::set<std::string> others = {reserve};
  for (const char* const box : MessageFolders::names)
    for (const std::string& name : Simulator::listFolder(MessageFolders::pathOf(box)))
      others.insert(MessageFolders::pathOf(box) + "/" + name);
  std::vector<std::string> paths;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(MessageFolders::root))
    if (!entry.is_directory() && others.count(entry.path()) == 0) paths.push_back(entry.path());
  std::sort(paths.begin(), paths.end());
  return paths;
}

bool World::freeze(const std::string& folder) {
  const char* const path = folder.c_str();
  return mount(path, path, nullptr, MS_BIND, nullptr) == 0 &&
         mount(nullptr, path, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0;
}

bool World::thaw(const std::string& folder) { return umount2(folder.c_str(), MNT_DETACH) == 0; }
