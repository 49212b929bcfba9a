#include <sys/mount.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>

#include "proof/Proofs.h"
#include "proof/Scenario.h"

namespace {
const std::string killed = "signal=KILL", writingOpen = "openat for writing";

// The calls that may return each error on a gateway. Not listed are calls that cannot fail here
// (rt_sigprocmask, umask, fcntl, ...) and calls whose failure strace cannot simulate: it would skip close and
// munmap entirely, and brk reports a failure by an address.
const std::map<std::string, std::set<std::string>> plausibleErrors = {
    {"EAGAIN", {"clone3", "connect", "flock"}},
    {"ECHILD", {"wait4"}},
    {"ECONNREFUSED", {"connect", "sendto"}},
    {"ECONNRESET", {"recvfrom"}},
    {"EINTR", {"flock", "poll", "wait4", "write"}},
    {"EIO",
     {"access", "chdir", "faccessat2", "fstatfs", "fsync", "getdents64", "mkdir", "newfstatat", "openat",
      writingOpen, "read", "renameat", "sync_file_range", "unlink", "unlinkat", "write"}},
    {"EMFILE", {"openat", writingOpen, "pipe2", "socket", "socketpair"}},
    {"ENFILE", {"openat", writingOpen, "pipe2"}},
    {"ENOBUFS", {"sendto", "socket", "socketpair"}},
    {"ENOLCK", {"flock"}},
    {"ENOMEM",
     {"chdir", "clone3", "connect", "getdents64", "mmap", "newfstatat", "openat", writingOpen, "poll",
      "recvfrom"}},
    {"ENOSPC", {"fsync", "mkdir", writingOpen, "renameat", "write"}},
    {"EPERM", {"setsid"}},
    {"EPIPE", {"sendto"}},
    {"EROFS", {"mkdir", writingOpen, "renameat", "unlink", "unlinkat"}},
};

std::vector<std::string> errorsOf(const Tracer::Call& call) {
  const bool writes = call.name == "openat" && call.text.find("O_WRONLY") != std::string::npos;
  std::vector<std::string> errors;
  for (const auto& [error, calls] : plausibleErrors)
    if (calls.count(writes ? writingOpen : call.name) != 0) errors.push_back("error=" + error);
  return errors;
}

// A system call that fails, or at which the daemon is killed.
struct Point {
  Tracer::Call call;
  std::string fault;

  std::string name() const {
    return "call " + std::to_string(call.number) + ", " + injection() + ", " + call.text.substr(0, 80);
  }
  std::string injection() const { return call.name + ":" + fault + ":when=" + std::to_string(call.nth); }
};

// The calls of the simulated clock's library are not the daemon's.
bool isClock(const Tracer::Call& call) {
  return call.name == "ppoll" || call.name == "futex" ||
         call.text.find("/run/gateway/") != std::string::npos ||
         (call.name == "read" && call.text.find(", 64)") != std::string::npos);
}

// An ext4 file system on the loop device `device`, in the file `image`.
struct Disk {
  std::string device, image;

  void insert() const {
    std::filesystem::create_directories("/var/config");
    if (mount(device.c_str(), "/var/config", "ext4", 0, nullptr) != 0)
      throw std::runtime_error("cannot mount");
  }
  // The disk loses what the kernel has not written to it, and /tmp loses all.
  void cutPower() const {
    const std::string written = image + ".written";
    copy_file(std::filesystem::path(image), written, std::filesystem::copy_options::overwrite_existing);
    umount("/var/config");
    std::ofstream(device, std::ios::binary) << std::ifstream(written, std::ios::binary).rdbuf();
    std::filesystem::remove_all("/tmp/sms");
    insert();
  }
};

class Runner {
 public:
  explicit Runner(const Words& words) : words_(words), scenario_(Scenario::named(words[0])) {
    if (words.size() > 4) disk_ = Disk{words[3], words[4]};
    if (disk_) disk_->insert();
    World world = scenario_.prepare();
    Tracer tracer;
    world.lives = scenario_.begin(world, tracer, "") && world.awaitSleep();
    tracer.detach();
    for (const Tracer::Call& call : Tracer::calls())
      if (!isClock(call)) calls_.push_back(call);
    world.pass(World::settlingPasses);
    descriptors_ = world.daemon().footprint().descriptors;
    if (!world.lives) throw std::runtime_error("no pass can be traced");
  }

  bool run(const std::function<std::vector<std::string>(const Tracer::Call&)>& faultsOf) {
    std::vector<Point> points;
    for (const Tracer::Call& call : calls_)
      for (const std::string& fault : faultsOf(call)) points.push_back({call, fault});
    return tryAll<Point>(words_[0], points, words_[1], words_[2],
                         [this](const Point& point) { return tryOne(point); });
  }

 private:
  Findings tryOne(const Point& point) {
    World world = scenario_.prepare();
    Tracer tracer;
    if (!scenario_.begin(world, tracer, "-e trace=" + point.call.name + " -e inject=" + point.injection()))
      return {{"ended: before the pass"}};
    // A daemon may survive the kill: the number of some calls depends on how fast other processes answer.
    const pid_t group = world.daemon().pid();
    const bool slept = world.awaitSleep();
    if (!slept && disk_) kill(-group, SIGKILL);  // the tool, too
    if (!slept && !world.awaitEnd()) return {{"hang: in the pass"}};
    tracer.detach();
    if (!Tracer::struck()) std::cout << words_[0] << ", " << point.name() << ": not reached" << std::endl;
    if (!slept && disk_) disk_->cutPower();
    const std::string status = world.daemon().ending();
    if (point.fault != killed) {
      world.ledger.died();  // messages still on the modem may come twice
      world.ledger.met(Fault::Unanswered | Fault::ApiFault);
      const bool mayEnd = scenario_.atStart && status.find("signal") != 0;
      if (!slept && !mayEnd) return {{"ended: with " + status}};
    }
    if (!slept) world.start();
    if (!world.lives) return {{"hang: the next daemon"}};
    Findings findings = world.liveOn();
    const Simulator::Footprint footprint = world.daemon().footprint();
    if (footprint.descriptors > descriptors_) findings.push_back({"left: a descriptor"});
    if (footprint.children > 0 && point.call.name != "wait4") findings.push_back({"left: a child"});
    return findings;
  }

  const Words words_;
  const Scenario& scenario_;
  std::optional<Disk> disk_;         // for power cuts
  std::vector<Tracer::Call> calls_;  // of an undisturbed pass
  std::size_t descriptors_ = 0;      // of the daemon after that pass
};
}  // namespace

bool crashAtCalls(const Words& words) {
  return Runner(words).run([](const Tracer::Call&) { return std::vector<std::string>{killed}; });
}

bool failCalls(const Words& words) { return Runner(words).run(errorsOf); }
