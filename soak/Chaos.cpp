#include "soak/Chaos.h"

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>

#include "simulator/support/Files.h"
#include "soak/Fault.h"

namespace {

using Simulator::ApiFault;
using Simulator::ToolFault;
using Simulator::waitUntil;
using Passed = Simulator::DaemonProcess::Passed;

constexpr double passSeconds = 30;
constexpr double waitSeconds = 10;

// The processes named `name`; all of them belong to this gateway.
void killAll(const std::string& name) {
  for (const std::string& entry : Simulator::listFolder("/proc"))
    if (Simulator::readFile("/proc/" + entry + "/comm") == name + "\n") ::kill(std::stoi(entry), SIGKILL);
}

}  // namespace

bool Chaos::fail(const std::string& problem) {
  problem_ = problem;
  return false;
}

bool Chaos::start(unsigned faults) {
  if (const std::string problem = gateway_.daemon.start(); !problem.empty()) return fail(problem);
  if (gateway_.daemon.awaitSleep(passSeconds) != Passed::Yes)
    return fail("The first pass did not come to its end.");
  ledger_.observe(faults);
  return true;
}

bool Chaos::quietPass() {
  if (passesLeft_ > 0) repair();
  return runPass();
}

bool Chaos::runPass() {
  const auto begin = std::chrono::steady_clock::now();
  const Passed passed = gateway_.daemon.pass();
  const std::chrono::duration<double, std::micro> took = std::chrono::steady_clock::now() - begin;
  passMicroseconds_ = static_cast<unsigned>(took.count());
  if (passed == Passed::Ended) return fail("The daemon ended: " + gateway_.daemon.ending());
  if (passed == Passed::NotYet) return fail("A pass took more than a minute.");
  ledger_.observe(faults_);
  return true;
}

bool Chaos::pass() {
  if (passesLeft_ == 1) repair();
  if (passesLeft_ > 0) --passesLeft_;
  if (passesLeft_ > 0 || below(100) < 70) return runPass();
  switch (below(lethal_ ? 8 : 4)) {
    case 0:
    case 1:
      breakForAWhile();
      return runPass();
    case 2:
      breakTool();
      return runPass();
    case 3:
      return passThatHangs();
    case 4:
      return terminate();
    case 5:
      return below(4) != 0 ? terminate() : spoilWhitelist();
    default:
      return kill();
  }
}

void Chaos::breakForAWhile() {
  passesLeft_ = 1 + below(3);
  faults_ = Fault::ApiFault;
  switch (below(9)) {
    case 0:
      return gateway_.api.setFault(ApiFault::Code, 500);
    case 1:
      return gateway_.api.setFault(ApiFault::Garbage, 0);
    case 2:
      return gateway_.api.setFault(ApiFault::Close, 0);
    case 3:
      return gateway_.api.close(below(2) == 0);
    case 4:
      faults_ = Fault::Other;
      return gateway_.syslog.close();
    case 5:
      faults_ = Fault::SendFault;
      return gateway_.setToolThere(false);
    case 6:
      faults_ = Fault::TmpFull;
      gateway_.tmp.fill();
      return;
    default:
      faults_ = Fault::DiskFull;
      gateway_.var.fill();
  }
}

void Chaos::breakTool() {
  constexpr const char* operations[] = {"unread", "read", "delete", "send"};
  constexpr unsigned faults[] = {Fault::Other, Fault::Other, Fault::NotDeleted, Fault::SendFault};
  constexpr ToolFault kinds[] = {ToolFault::Fail, ToolFault::Kill, ToolFault::Silent};
  const unsigned operation = below(4);
  gateway_.modem.setFault(operations[operation], kinds[below(3)], 1 + below(2));
  faults_ = faults[operation];
  passesLeft_ = 1;
}

void Chaos::repair() {
  if (!gateway_.repair()) fail("The gateway could not be repaired.");
  faults_ = Fault::None;
  passesLeft_ = 0;
}

// The tool hangs in the middle of its output, or the API does not answer, until it is put right.
bool Chaos::passThatHangs() {
  constexpr const char* operations[] = {"read", "send"};
  const unsigned operation = below(3);
  faults_ = operation < 2 ? Fault::Other : Fault::ApiFault;
  if (operation < 2)
    gateway_.modem.setFault(operations[operation], ToolFault::Hang, 1);
  else
    gateway_.api.setFault(ApiFault::Silent, 0);
  gateway_.clock.grant();
  const auto hangs = [&] { return !gateway_.modem.hangingOperation().empty() || gateway_.api.waiting() > 0; };
  if (!waitUntil(waitSeconds, [&] { return hangs() || gateway_.daemon.awaitSleep(0) != Passed::NotYet; }))
    return fail("A pass neither hung nor ended.");
  const bool ends = lethal_ && hangs() && below(2) == 0;
  if (ends)
    gateway_.daemon.signal(SIGTERM);
  else if (operation == 0 && !gateway_.modem.hangingOperation().empty() && below(2) == 0)
    cutListing();
  const unsigned faults = faults_;
  repair();
  if (!ends && gateway_.daemon.awaitSleep(passSeconds) != Passed::Yes)
    return fail("A pass that hung did not go on.");
  return ends ? stopAndRestart(faults) : look(faults);
}

void Chaos::cutListing() {
  killAll("sms");
  gateway_.modem.setHanging("");
  faults_ = Fault::CutListing;
}

bool Chaos::look(unsigned faults) {
  ledger_.observe(faults);
  return problem_.empty();
}

// To be called in the middle of a pass, which is to be completed.
bool Chaos::stopAndRestart(unsigned faults) {
  if (!gateway_.daemon.stop()) return fail("The daemon did not end after SIGTERM.");
  if (gateway_.daemon.ending() != "0") return fail("After SIGTERM: " + gateway_.daemon.ending());
  return look(faults) && restart();
}

// Lets a pass begin, and go on for a moment.
void Chaos::waitInsidePass() {
  gateway_.clock.grant();
  usleep(below(passMicroseconds_ + passMicroseconds_ / 4));
}

bool Chaos::terminate() {
  waitInsidePass();
  return stopAndRestart(Fault::Other);
}

// Of the daemon alone, or together with what it has started.
bool Chaos::kill() {
  const pid_t daemon = gateway_.daemon.pid();
  waitInsidePass();
  ::kill(below(2) == 0 ? daemon : -daemon, SIGKILL);
  if (!waitUntil(waitSeconds, [&] { return !gateway_.daemon.running(); }))
    return fail("The daemon survived SIGKILL.");
  while (waitpid(-1, nullptr, 0) > 0) continue;  // what it had started
  ledger_.observe(Fault::Killed);
  return restart();
}

bool Chaos::restart() {
  ++ends_;
  return start(Fault::Restarted);
}

// For a pass of a daemon of its own: it reads the whitelist when it starts.
bool Chaos::spoilWhitelist() {
  const Json::Value numbers = gateway_.settings.value()["smsCommands"]["whitelist"]["numbers"];
  if (!gateway_.daemon.stop()) return fail("The daemon did not end after SIGTERM.");
  ledger_.observe(Fault::Other);
  Json::Value spoilt(Json::arrayValue);
  spoilt.append(Json::objectValue);
  gateway_.settings.set("smsCommands.whitelist.numbers", spoilt);
  ++ends_;
  const bool started = start(Fault::BadWhitelist | Fault::Restarted);
  gateway_.settings.set("smsCommands.whitelist.numbers", numbers);
  if (!started || !gateway_.daemon.stop())
    return fail("The daemon did not run, or not end, with a spoilt whitelist.");
  ledger_.observe(Fault::BadWhitelist);
  return restart();
}
