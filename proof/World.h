#pragma once

#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "proof/Ledger.h"
#include "simulator/gateway/Gateway.h"

/// A gateway, the daemon in it, and a ledger of its messages. There is one world at a time in a private
/// gateway, since all of it lies at fixed paths.
class World {
 public:
  static constexpr char friendly[] = "+4917012345";  ///< may send commands
  static constexpr char stranger[] = "+4917054321";
  static constexpr char other[] = "+4917011111";
  static constexpr char refused[] = "+4917022222";  ///< the modem refuses it until accept()
  /// Where the daemon keeps its notes, and the room that a full disk leaves for them.
  static constexpr char spool[] = "/var/config/sms/spool", reserve[] = "/var/config/sms/spool/reserve";

  /// Where the built programs lie; VELD names another daemon.
  struct Programs {
    std::string daemon, simulatorFolder;
  };
  /// `limit`: of the inbox and of the outbox. `fresh`: what an earlier world left is removed.
  explicit World(const Programs& programs, unsigned limit = 100'000, bool fresh = true);

  /// Enters a message that comes in; its parts come with deliver(). Gives its number.
  unsigned enter(const std::string& text, const std::string& sender = other, unsigned parts = 1);
  void deliver(unsigned message, std::size_t part);
  /// A message comes in, whole.
  void receive(const std::string& text, const std::string& sender = other, unsigned parts = 1);
  /// Another program queues a message.
  void queue(const std::string& text, const std::string& number = other, unsigned retries = 0);
  /// Receives and queues so many, each with a text of its own that begins with `what`.
  void load(const std::string& what, unsigned incoming, unsigned outgoing = 0);
  void accept();

  /// Starts the daemon and waits for the end of its first pass. This and what follows: false when the daemon
  /// ends or hangs instead; each wait ends with a look of the ledger.
  [[nodiscard]] bool start();
  [[nodiscard]] bool pass(unsigned count = 1);
  [[nodiscard]] bool awaitSleep();
  /// Lets a pass begin, after beforePass().
  void beginPass();
  /// Lets a pass begin and waits until the tool does `operation`, where it hangs until it is repaired. False
  /// when the pass ends without it.
  bool reach(const std::string& operation);
  /// Waits until `hangs` holds, or the daemon sleeps or ends. Whether it hangs.
  bool awaitHang(const std::function<bool()>& hangs);
  /// Asks the daemon to end, and waits until it has done so in good order.
  [[nodiscard]] bool stop();
  /// Kills the daemon, or it and what it has started, and waits until both have ended.
  [[nodiscard]] bool kill(bool group = false);
  /// Waits until a daemon that was told to end, and what it has started, have ended.
  [[nodiscard]] bool awaitEnd();

  /// The ledger looks; `note` tells what has happened.
  void look(const std::string& note);
  /// What is wrong in the end, files that are left over included.
  std::vector<Ledger::Finding> settle();
  /// Prints what settle() finds outside of every window, and counts, each line after `what`. False when there
  /// is such a finding. All that is known of it is written to the file `details`, if that is given.
  bool report(const std::string& what, const std::string& details = "");
  /// The files that the daemon keeps for itself, by path: all below its root that lie in no message folder,
  /// but for the reserve, which holds nothing and is to stay.
  static std::vector<std::string> ownFiles();

  Simulator::Gateway& gateway() { return *gateway_; }
  Simulator::DaemonProcess& daemon() { return gateway_->daemon; }
  Ledger ledger;
  unsigned faults = 0;                       ///< at work now (Fault)
  std::function<void()> beforePass = [] {};  ///< what comes in or is queued before each pass
  unsigned passMicroseconds = 20'000;        ///< that the last pass took
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
  std::size_t logLines_ = 0, requests_ = 0;  // that the ledger knows
};
