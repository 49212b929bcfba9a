#pragma once

#include <functional>
#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "proof/Ledger.h"
#include "simulator/gateway/Gateway.h"

using Findings = std::vector<Ledger::Finding>;

/// A gateway, the daemon in it, and a ledger of its messages. A private gateway holds one world at a time,
/// because a world uses fixed paths.
class World {
 public:
  static constexpr char friendly[] = "+4917012345";  ///< may send commands
  static constexpr char stranger[] = "+4917054321";
  static constexpr char other[] = "+4917011111";
  static constexpr char refused[] = "+4917022222";  ///< the modem refuses it until accept()
  static constexpr unsigned settlingPasses = 4;     ///< enough for a retry after a restart
  /// The daemon's spool, and its file that keeps room for notes on a full disk.
  static constexpr char spool[] = "/var/config/sms/spool", reserve[] = "/var/config/sms/spool/reserve";

  /// Removes the files of an earlier world. `limit`: of the inbox and of the outbox. The daemon is the built
  /// one, or the one that the environment variable VELD names.
  explicit World(unsigned limit = 100'000);

  /// Enters an incoming message; deliver() delivers its parts. Returns its number.
  std::size_t enter(const std::string& text, const std::string& sender = other, unsigned parts = 1);
  void deliver(std::size_t message, std::size_t part);
  /// Delivers a whole message to the modem.
  void receive(const std::string& text, const std::string& sender = other, unsigned parts = 1);
  /// Queues a message, as another program does.
  void queue(const std::string& text, const std::string& number = other, unsigned retries = 0);
  /// Makes the modem accept all numbers from now on.
  void accept() {
    gateway_->modem.setRefused(refused, false);
    ledger.accept();
  }

  /// False once the daemon has ended or hung and must not; the steps below then do nothing.
  bool lives = true;
  /// Starts the daemon and waits for the end of its first pass.
  void start();
  void pass(unsigned count = 1);
  /// Repairs the gateway, waits for the end of the pass, and ends all faults.
  void repair();
  /// Sends SIGTERM, and waits until the daemon has exited with status 0.
  void stop();
  /// Kills the daemon, or the daemon and its children, and waits until all of them have ended.
  void kill(bool group = false);
  /// Runs steps as long as the daemon lives. The ledger's histories contain `name`.
  using Step = std::function<void(World&)>;
  using Steps = std::vector<Step>;
  void run(const Steps& steps, const std::string& name);

  /// Calls beforePass() and begins a pass.
  void beginPass() {
    beforePass();
    gateway_->clock.grant();
  }
  /// Waits for the end of a pass; false when the daemon ends or hangs instead.
  bool awaitSleep();
  /// Begins a pass and waits until the tool hangs in `operation`, until it is repaired. False when the pass
  /// ends without that operation.
  bool reach(const std::string& operation);
  /// Waits until `hangs` is true, or the daemon sleeps or ends. Returns whether it hangs.
  bool awaitHang(const std::function<bool()>& hangs);
  /// Waits until a daemon that was told to end, and its children, have ended.
  bool awaitEnd();

  /// Lets the daemon process two more messages. Returns every harm then.
  Findings liveOn();
  /// Lets the ledger observe the world; `note` describes what has happened.
  void look(const std::string& note);
  /// Returns every harm at the end, including files that are left over.
  Findings settle();
  /// Prints the findings of settle() outside every window, and counts, each line after `what`. False when
  /// there is such a finding. Writes its history to the file `details`, if given.
  bool report(const std::string& what, const std::string& details = "");
  /// The daemon's own files, by path: all below its root outside the message folders, except the reserve,
  /// which holds no message and stays.
  static std::vector<std::string> ownFiles();
  /// Makes a folder read-only by a mount on itself, or removes the mount. False when that fails.
  static bool freeze(const std::string& folder);
  static bool thaw(const std::string& folder);

  Simulator::Gateway& gateway() { return *gateway_; }
  Simulator::DaemonProcess& daemon() { return gateway_->daemon; }
  Ledger ledger;
  unsigned faults = 0;                       ///< active now (Fault)
  std::function<void()> beforePass = [] {};  ///< receives and queues messages before each pass
  std::mt19937 random{1};
  unsigned below(unsigned bound) { return static_cast<unsigned>(random() % bound); }

 private:
  std::unique_ptr<Simulator::Gateway> gateway_;
  std::map<std::size_t, std::pair<std::string, std::vector<std::string>>> deliveries_;  // sender and parts
  unsigned nextReference_ = 1;
  std::string running_;                      // the name of the steps that run
  std::size_t logLines_ = 0, requests_ = 0;  // already in the ledger
};
