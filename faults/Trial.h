#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "simulator/gateway/Gateway.h"

/// What came of the messages, a line each, which begins with the kind of harm: "lost", "twice", "sent again",
/// "unsent", "torn", "left". What falls into a window that is known and stays open is no harm.
struct Verdict {
  std::set<std::string> harms;
  std::set<std::string> windows;
};

/// A gateway of its own for one trial of the daemon, and a ledger of its messages. They are told apart by
/// their whole texts, so each has one of its own. The file systems are emptied first: one trial at a time.
class Trial {
 public:
  static constexpr char friendly[] = "+4917012345";  ///< may send commands
  static constexpr char other[] = "+4917011111";
  static constexpr char refused[] = "+4917022222";  ///< the modem refuses it until accept()

  /// What is started, and where the tool and the clock library lie.
  struct Programs {
    std::string daemon;
    std::string simulatorFolder;
  };
  /// `limit`: of the inbox and of the outbox.
  Trial(const Programs& programs, unsigned limit);

  /// A message comes in, in `parts` parts; the last one only with release().
  void receive(const std::string& text, const std::string& sender = other, unsigned parts = 1,
               bool hold = false);
  void release();
  /// Another program queues a message.
  void queue(const std::string& text, const std::string& number = other, unsigned retries = 0);
  void accept();
  /// No message that is known so far is missed from now on.
  void mayBeDisplaced();

  /// Starts the daemon and waits for the end of its first pass; false when it ends or hangs instead.
  bool start();
  /// Runs passes; false when the daemon ends or hangs.
  bool pass(unsigned count = 1);
  /// Waits until the daemon sleeps; false when it ends or hangs.
  bool awaitSleep();
  /// Waits until the daemon has ended, and what it had started, too; false when that does not happen.
  bool awaitEnd();

  /// What the modem still has may be filed twice from now on: it lists it again.
  void allowListedAgain();
  /// What came of the messages, when all ought to have come to an end. `unanswered`: a daemon ended between
  /// the note that a message is sent and the note of the tool's answer, or the answer failed.
  Verdict look(bool unanswered);

  Simulator::Gateway& gateway() { return *gateway_; }
  Simulator::DaemonProcess& daemon() { return gateway_->daemon; }

 private:
  struct Message {
    std::string text;
    std::vector<std::string> parts = {};  ///< as the modem lists them
    bool missed = true;                   ///< when it is gone
    bool refused = false;
    bool listedAgain = false;
  };
  void lookAtInbox(Verdict& verdict);
  void lookAtOutbox(Verdict& verdict, bool unanswered);
  static void lookForLeftovers(Verdict& verdict);

  unsigned limit_;
  std::unique_ptr<Simulator::Gateway> gateway_;
  std::vector<Message> incoming_;
  std::vector<Message> outgoing_;
  std::pair<std::string, std::string> held_;  ///< sender and user data
  unsigned nextReference_ = 1;
};
