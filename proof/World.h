#pragma once

#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "proof/Ledger.h"
#include "simulator/gateway/Gateway.h"

/// A gateway, the daemon in it, and a ledger of its messages. A private gateway holds one world at a time,
/// because a world uses fixed paths.
class World {
 public:
  static constexpr char friendly[] = "+4917012345";  ///< may send commands
  static constexpr char stranger[] = "+4917054321";
  static constexpr char other[] = "+4917011111";
  static constexpr char refused[] = "+4917022222";  ///< the modem refuses it until accept()
  /// The daemon's spool, and the file that reserves room in it for a full disk.
  static constexpr char spool[] = "/var/config/sms/spool", reserve[] = "/var/config/sms/spool/reserve";

  /// The paths of the built programs; VELD names another daemon.
  struct Programs {
    std::string daemon, simulatorFolder;
  };
  /// `limit`: of the inbox and of the outbox. `fresh`: removes the files of an earlier world.
  explicit World(const Programs& programs, unsigned limit = 100'000, bool fresh = true);

  /// Enters an incoming message; deliver() delivers its parts. Returns its number.
  unsigned enter(const std::string& text, const std::string& sender = other, unsigned parts = 1);
  void deliver(unsigned message, std::size_t part);
  /// Delivers a whole message to the modem.
  void receive(const std::string& text, const std::string& sender = other, unsigned parts = 1);
  /// Queues a message, as another program does.
  void queue(const std::string& text, const std::string& number = other, unsigned retries = 0);
  /// Receives and queues so many messages, each with a unique text that begins with `what`.
  void load(const std::string& what, unsigned incoming, unsigned outgoing = 0);
  void accept();

  /// Starts the daemon and waits for the end of its first pass. This and the following calls return false
  /// when the daemon ends or hangs instead; after each wait the ledger observes the world.
  [[nodiscard]] bool start();
  [[nodiscard]] bool pass(unsigned count = 1);
  [[nodiscard]] bool awaitSleep();
  /// Calls beforePass() and begins a pass.
  void beginPass();
  /// Begins a pass and waits until the tool hangs in `operation`, until it is repaired. False when the pass
  /// ends without that operation.
  bool reach(const std::string& operation);
  /// Waits until `hangs` is true, or the daemon sleeps or ends. Returns whether it hangs.
  bool awaitHang(const std::function<bool()>& hangs);
  /// Sends SIGTERM, and waits until the daemon has exited with status 0.
  [[nodiscard]] bool stop();
  /// Kills the daemon, or the daemon and its children, and waits until all of them have ended.
  [[nodiscard]] bool kill(bool group = false);
  /// Waits until a daemon that was told to end, and its children, have ended.
  [[nodiscard]] bool awaitEnd();

  /// Lets the ledger observe the world; `note` describes what has happened.
  void look(const std::string& note);
  /// Returns every harm at the end, including files that are left over.
  std::vector<Ledger::Finding> settle();
  /// Prints the findings of settle() outside every window, and counts, each line after `what`. False when
  /// there is such a finding. Writes its history to the file `details`, if given.
  bool report(const std::string& what, const std::string& details = "");
  /// The daemon's own files, by path: all below its root outside the message folders, except the reserve,
  /// which is empty and stays.
  static std::vector<std::string> ownFiles();

  Simulator::Gateway& gateway() { return *gateway_; }
  Simulator::DaemonProcess& daemon() { return gateway_->daemon; }
  Ledger ledger;
  unsigned faults = 0;                       ///< active now (Fault)
  std::function<void()> beforePass = [] {};  ///< receives and queues messages before each pass
  unsigned passMicroseconds = 20'000;        ///< duration of the last pass
  std::mt19937 random{1};
  unsigned below(unsigned bound) { return static_cast<unsigned>(random() % bound); }

 private:
  struct Delivery {
    std::string sender;
    std::vector<std::string> parts;
  };
  std::unique_ptr<Simulator::Gateway> gateway_;
  std::vector<Delivery> deliveries_;  // by message
  unsigned nextReference_ = 1;
  std::size_t logLines_ = 0, requests_ = 0;  // already in the ledger
};
