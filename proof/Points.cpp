#include <algorithm>
#include <iostream>
#include <map>
#include <random>

#include "proof/Fault.h"
#include "proof/Proofs.h"
#include "proof/Scenario.h"
#include "proof/Tracer.h"

namespace {

using Findings = std::vector<Ledger::Finding>;

constexpr unsigned settlingPasses = 4;  // enough for a retry after a restart
const std::string writingOpen = "openat for writing";

// The errors that each call may return on a gateway. Not listed are calls that cannot fail here
// (rt_sigprocmask, umask, fcntl, ...) and calls whose failure strace cannot simulate: it would skip close and
// munmap entirely, and brk reports a failure by an address.
const std::map<std::string, std::vector<std::string>> plausibleErrors = {
    {"openat", {"EMFILE", "ENFILE", "ENOMEM", "EIO"}},
    {writingOpen, {"EMFILE", "ENFILE", "ENOMEM", "EIO", "ENOSPC", "EROFS"}},
    {"read", {"EIO"}},
    {"pread64", {"EIO"}},
    {"write", {"ENOSPC", "EIO", "EINTR"}},
    {"writev", {"ENOSPC", "EIO", "EINTR"}},
    {"fallocate", {"ENOSPC", "EIO", "EOPNOTSUPP"}},
    {"ftruncate", {"EIO"}},
    {"newfstatat", {"ENOMEM", "EIO"}},
    {"access", {"EIO"}},
    {"getdents64", {"EIO", "ENOMEM"}},
    {"mkdir", {"EIO", "ENOSPC", "EROFS"}},
    {"unlink", {"EIO", "EROFS"}},
    {"rename", {"EIO", "ENOSPC", "EROFS"}},
    {"fsync", {"EIO", "ENOSPC"}},
    {"fdatasync", {"EIO", "ENOSPC"}},
    {"syncfs", {"EIO", "ENOSPC"}},
    {"flock", {"EAGAIN", "ENOLCK", "EINTR"}},
    {"pipe2", {"EMFILE", "ENFILE"}},
    {"clone3", {"EAGAIN", "ENOMEM"}},
    {"wait4", {"ECHILD", "EINTR"}},
    {"mmap", {"ENOMEM"}},
    {"setsid", {"EPERM"}},
    {"chdir", {"EIO", "ENOMEM"}},
    {"socket", {"EMFILE", "ENOBUFS"}},
    {"socketpair", {"EMFILE", "ENOBUFS"}},
    {"eventfd2", {"EMFILE", "ENOMEM"}},
    {"connect", {"ECONNREFUSED", "EAGAIN", "ENOMEM"}},
    {"sendto", {"ECONNREFUSED", "ENOBUFS", "EPIPE"}},
    {"recvfrom", {"ECONNRESET", "ENOMEM"}},
    {"poll", {"ENOMEM", "EINTR"}},
};

std::vector<std::string> errorsOf(const Tracer::Call& call) {
  const bool writes = call.name == "openat" && call.text.find("O_WRONLY") != std::string::npos;
  const auto found = plausibleErrors.find(writes ? writingOpen : call.name);
  return found == plausibleErrors.end() ? std::vector<std::string>() : found->second;
}

struct Point {
  Tracer::Call call;
  std::string error;  ///< empty: SIGKILL

  std::string injection() const {
    return call.name + (error.empty() ? ":signal=KILL" : ":error=" + error) +
           ":when=" + std::to_string(call.nth);
  }
};

// The calls of the simulated clock's library are not the daemon's.
bool isClock(const Tracer::Call& call) {
  return call.name == "ppoll" || call.name == "futex" ||
         call.text.find("/run/gateway/") != std::string::npos ||
         (call.name == "read" && call.text.find(", 64)") != std::string::npos);
}

class Runner {
 public:
  Runner(const World::Programs& programs, const std::string& scenario)
      : programs_(programs), scenario_(find(scenario)) {
    World world = prepare(scenario_, programs_);
    Tracer tracer;
    if (!begin(scenario_, world, tracer, {}) || !world.awaitSleep()) giveUp("no pass could be traced");
    tracer.detach();
    for (const Tracer::Call& call : Tracer::calls())
      if (!isClock(call)) calls_.push_back(call);
    if (!world.pass(settlingPasses)) giveUp("an undisturbed pass has no end");
    descriptors_ = world.daemon().footprint().descriptors;
  }

  template <typename ErrorsOf>
  bool run(const ErrorsOf& errors, unsigned sample, unsigned seed) {
    std::vector<Point> points;
    for (const Tracer::Call& call : calls_)
      for (const std::string& error : errors(call)) points.push_back({call, error});
    if (sample > 0) {
      std::shuffle(points.begin(), points.end(), std::mt19937(seed));
      points.resize(std::min<std::size_t>(points.size(), sample));
    }
    for (const Point& point : points) count(point, tryOne(point));
    std::cout << scenario_.name << ": " << points.size() << " points tried";
    for (const auto& [kind, number] : counts_) std::cout << ", " << number << " " << kind;
    std::cout << std::endl;
    return counts_.count("harmful") == 0;
  }

 private:
  [[noreturn]] static void giveUp(const std::string& why) {
    std::cerr << "proof: " << why << "\n";
    std::exit(EXIT_FAILURE);
  }
  static const Scenario& find(const std::string& name) {
    for (const Scenario& scenario : scenarios)
      if (name == scenario.name) return scenario;
    giveUp("no scenario is called " + name);
  }

  void count(const Point& point, const Findings& findings) {
    bool harmful = false;
    for (const Ledger::Finding& finding : findings) {
      if (finding.window != nullptr) continue;
      harmful = true;
      std::cout << scenario_.name << ", call " << point.call.number << ", " << point.injection() << ": "
                << finding.text << "; " << point.call.text.substr(0, 80) << std::endl;
    }
    ++counts_[harmful ? "harmful" : findings.empty() ? "clean" : "in a window"];
    if (!Tracer::struck()) ++counts_["not reached"];
  }

  Findings tryOne(const Point& point) {
    World world = prepare(scenario_, programs_);
    Tracer tracer;
    if (!begin(scenario_, world, tracer,
               {"-e", "trace=" + point.call.name, "-e", "inject=" + point.injection()}))
      return ending("ended: before the pass");
    return point.error.empty() ? crash(world, tracer) : fail(world, point, tracer);
  }

  static Findings ending(const std::string& text) { return {{text, nullptr, -1}}; }

  static Findings crash(World& world, Tracer& tracer) {
    // The daemon may survive: the number of some calls depends on how fast other processes answer.
    const bool survived = world.awaitSleep();
    if (!survived && !world.awaitEnd()) return ending("hang: in the pass");
    tracer.detach();
    if (!survived && !world.start()) return ending("hang: the next daemon");
    if (!world.pass(settlingPasses)) return ending("hang: in a later pass");
    return world.settle();
  }

  Findings fail(World& world, const Point& point, Tracer& tracer) const {
    const bool slept = world.awaitSleep();
    tracer.detach();
    Simulator::DaemonProcess& daemon = world.daemon();
    if (!slept && daemon.running()) return ending("hang: in the pass");
    world.ledger.died();  // messages still on the modem may come twice
    world.ledger.met(Fault::Unanswered | Fault::ApiFault);
    if (!daemon.running()) {
      const std::string status = daemon.ending();
      if (!scenario_.atStart || status.find("signal") == 0) return ending("ended: with " + status);
      if (!world.start()) return ending("ended: the next daemon, too");
    }
    if (!world.pass(settlingPasses)) return ending("hang: in the next pass");
    world.receive("came in afterwards");
    world.queue("was queued afterwards");
    if (!world.pass()) return ending("hang: in a later pass");
    Findings findings = world.settle();
    const Simulator::Footprint footprint = daemon.footprint();
    if (footprint.descriptors > descriptors_) findings.push_back({"left: a descriptor", nullptr, -1});
    if (footprint.children > 0 && point.call.name != "wait4")
      findings.push_back({"left: a child", nullptr, -1});
    return findings;
  }

  const World::Programs programs_;
  const Scenario& scenario_;
  std::vector<Tracer::Call> calls_;  // of an undisturbed pass
  std::size_t descriptors_ = 0;      // of the daemon after it
  std::map<std::string, unsigned> counts_;
};

}  // namespace

bool crashAtCalls(const World::Programs& programs, const Words& words) {
  const auto kill = [](const Tracer::Call&) { return std::vector<std::string>{""}; };
  return Runner(programs, words[0]).run(kill, numberOf(words[1]), numberOf(words[2]));
}

bool failCalls(const World::Programs& programs, const Words& words) {
  return Runner(programs, words[0]).run(errorsOf, numberOf(words[1]), numberOf(words[2]));
}
