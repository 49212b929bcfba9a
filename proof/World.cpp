#include "proof/World.h"

#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>

#include "proof/Fault.h"
#include "simulator/modem/GsmEncoder.h"
#include "simulator/support/Files.h"
#include "simulator/support/Waiting.h"

namespace {

namespace fs = std::filesystem;
using Simulator::Gateway;
using Simulator::MessageFolders;

constexpr double hangSeconds = 120;  // an emulated machine is slow
constexpr unsigned headerSize = 28;  // of the header of a part: seven octets, printed as \xHH

// Removes the files of an earlier world, but not folders that are mount points.
std::unique_ptr<Gateway> makeGateway(const World::Programs& programs, bool fresh) {
  for (const std::string folder : {"/var/config", "/var/log", "/run/modem", "/run/gateway", "/tmp/sms"})
    if (fresh && fs::exists(folder))
      for (const fs::directory_entry& entry : fs::directory_iterator(folder)) fs::remove_all(entry);
  return std::make_unique<Gateway>(Gateway::Options{programs.daemon, programs.simulatorFolder, true});
}

}  // namespace

World::World(const Programs& programs, unsigned limit, bool fresh)
    : ledger(limit), gateway_(makeGateway(programs, fresh)) {
  gateway_->settings.set("receivedLimit", limit);
  gateway_->settings.set("sentLimit", limit);
  gateway_->modem.setRefused(refused, true);
  if (!gateway_->settings.setTimings("[5]")) std::abort();
}

unsigned World::enter(const std::string& text, const std::string& sender, unsigned parts) {
  Simulator::GsmEncoder encoder;
  if (!encoder.encode(text, {false, parts, nextReference_++}).empty()) std::abort();
  std::vector<std::pair<std::string, std::string>> entered;
  entered.reserve(encoder.parts.size());
  for (const std::string& part : encoder.parts)
    entered.emplace_back(part, encoder.parts.size() > 1 ? part.substr(headerSize) : text);
  const unsigned kind = text.find('#') == std::string::npos ? Kind::Text
                        : sender == friendly                ? Kind::Command
                                                            : Kind::StrangersCommand;
  const unsigned message = ledger.enterIncoming(text, kind, entered);
  deliveries_.resize(message + 1);
  deliveries_[message] = {sender, encoder.parts};
  return message;
}

void World::deliver(unsigned message, std::size_t part) {
  gateway_->modem.receive(deliveries_[message].sender, deliveries_[message].parts[part]);
  ledger.arrived(message, part);
}

void World::receive(const std::string& text, const std::string& sender, unsigned parts) {
  const unsigned message = enter(text, sender, parts);
  for (std::size_t part = 0; part < deliveries_[message].parts.size(); ++part) deliver(message, part);
}

void World::queue(const std::string& text, const std::string& number, unsigned retries) {
  if (!gateway_->folders.queue(number, text, retries).empty())
    ledger.enterQueued(text, number, number == refused);
}

void World::load(const std::string& what, unsigned incoming, unsigned outgoing) {
  for (unsigned i = 1; i <= incoming; ++i) receive(what + ", in " + std::to_string(i));
  for (unsigned i = 1; i <= outgoing; ++i) queue(what + ", out " + std::to_string(i));
}

void World::accept() {
  gateway_->modem.setRefused(refused, false);
  ledger.accept();
}

bool World::start() {
  const std::string problem = daemon().start();
  look("a daemon starts. " + problem);
  faults |= Fault::Restarted;
  const bool sleeps = problem.empty() && awaitSleep();
  faults &= ~Fault::Restarted;
  return sleeps;
}

bool World::pass(unsigned count) {
  bool sleeps = awaitSleep();
  for (unsigned i = 0; sleeps && i < count; ++i) {
    const auto begin = std::chrono::steady_clock::now();
    beginPass();
    sleeps = awaitSleep();
    const std::chrono::duration<double, std::micro> took = std::chrono::steady_clock::now() - begin;
    passMicroseconds = static_cast<unsigned>(took.count());
  }
  return sleeps;
}

void World::beginPass() {
  beforePass();
  gateway_->clock.grant();
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
  bool hanging = false;
  Simulator::waitUntil(hangSeconds, [&] {
    hanging = hangs();
    return hanging || gateway_->clock.sleeping() || !daemon().running();
  });
  return hanging;
}

bool World::stop() {
  const bool stopped = daemon().stop();
  look("SIGTERM, ended with " + daemon().ending());
  return stopped && daemon().ending() == "0";
}

bool World::kill(bool group) {
  if (!daemon().running()) return false;
  ::kill(group ? -daemon().pid() : daemon().pid(), SIGKILL);
  gateway_->modem.clearFaults();
  return awaitEnd();
}

bool World::awaitEnd() {
  const bool ended = Simulator::waitUntil(hangSeconds, [this] { return !daemon().running(); });
  while (ended && waitpid(-1, nullptr, 0) > 0) continue;
  look("the daemon has ended, with " + daemon().ending());
  ledger.died();
  return ended;
}

void World::look(const std::string& note) {
  Ledger::News news;
  news.faults = faults;
  news.note = note;
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

std::vector<Ledger::Finding> World::settle() {
  look("the end");
  std::vector<Ledger::Finding> findings = ledger.settle(gateway_->modem.sent());
  for (const std::string& path : ownFiles()) findings.push_back({"left: " + path, nullptr, -1});
  return findings;
}

bool World::report(const std::string& what, const std::string& details) {
  std::ofstream file(details);
  std::map<std::string, unsigned> counts;
  for (const Ledger::Finding& finding : settle()) {
    const bool known = finding.window != nullptr;
    ++counts[known ? finding.window->name : "outside of every window"];
    if (known) continue;
    std::cout << what << ": " << finding.text << "\n";
    file << finding.text << "\n";
    if (finding.message >= 0) ledger.tell(file, static_cast<unsigned>(finding.message));
  }
  std::cout << what << ": " << ledger.entered() << " messages";
  for (const auto& [name, number] : counts) std::cout << "; " << number << " " << name;
  std::cout << std::endl;
  return counts.count("outside of every window") == 0;
}

std::vector<std::string> World::ownFiles() {
  std::vector<std::string> paths;
  for (const auto& entry : fs::recursive_directory_iterator(MessageFolders::root)) {
    const std::string parent = entry.path().parent_path();
    const bool inBox = std::any_of(std::begin(MessageFolders::boxes), std::end(MessageFolders::boxes),
                                   [&](const char* box) { return parent == MessageFolders::pathOf(box); });
    if (!entry.is_directory() && !inBox && entry.path() != reserve) paths.push_back(entry.path());
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}
