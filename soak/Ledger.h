#pragma once

#include <json/value.h>

#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

/// Knows every message that was put in, and says at the end what became of it. It looks at the modem and at
/// the files, never at the daemon.
///
/// Each message, and each part of a long one, carries a token in its text, "=12=", by which it is found
/// again. Passes are counted from 1; 0 stands for none.
class Ledger {
 public:
  enum class Kind { Text, Command, StrangersCommand };

  /// A number that is nobody's: that of a message, or of a part of one, and of its token.
  unsigned newNumber() { return next_++; }
  static std::string token(unsigned number) { return "=" + std::to_string(number) + "="; }

  /// Enters a message that the modem has just taken in.
  void enterIncoming(unsigned number, Kind kind) { enterPart(number, kind, number, 1); }
  /// The same for one of `count` parts of the message whose first part is, or will be, `first`.
  void enterPart(unsigned number, Kind kind, unsigned first, unsigned count);
  /// Enters a message that was queued under `guid`.
  void enterQueued(unsigned number, const std::string& guid, bool isRefused);

  /// Looks at everything, after a pass in which the `faults` (Fault) were at work.
  void observe(unsigned faults);

  /// The messages that are still to be filed: on the modem or in the outbox.
  std::size_t underWay() const { return onModem_.size() + active_.size(); }
  /// Those that are nowhere.
  std::size_t lost() const;
  std::size_t entered() const { return incoming_.size() + outgoing_.size(); }

  /// Writes what was lost and doubled in which window, and every message of which that cannot be said; false
  /// when there is one. `sent` is what the modem has sent, `bodies` are those of the requests of the local
  /// API.
  bool settle(std::ostream& report, const std::vector<Json::Value>& sent,
              const std::vector<std::string>& bodies) const;

 private:
  struct Incoming {
    Kind kind = Kind::Text;
    unsigned first = 0;           ///< part of its message
    unsigned arrived = 0;         ///< the pass before which it came in
    unsigned taken = 0;           ///< the pass after which it was no longer on the modem
    unsigned filed = 0;           ///< the pass in which it was filed last
    unsigned overwritten = 0;     ///< the pass in which its record became another's
    std::set<std::string> guids;  ///< of the records that hold or held it
  };
  struct Outgoing {
    std::string guid;
    bool isRefused = false;
    unsigned queued = 0;
    unsigned done = 0;  ///< the pass in which it was filed for good, or was gone
    std::string box;    ///< that it is in; empty when it is gone
  };

  void observeModem();
  void observeInbox();
  void observeRecord(const std::string& guid, const std::set<unsigned>& tokens);
  void observeOutbox();
  unsigned faultsIn(unsigned first, unsigned last) const;

  unsigned next_ = 1;
  std::vector<unsigned> faults_{0};                     ///< by pass
  std::map<unsigned, Incoming> incoming_;               ///< by number
  std::map<unsigned, Outgoing> outgoing_;               ///< by number
  std::set<unsigned> onModem_, active_;                 ///< numbers of those under way
  std::map<unsigned, unsigned> partsOf_;                ///< count of parts, by the number of the first
  std::map<unsigned, unsigned> firstArrival_;           ///< pass of the part that came first, by the same
  std::set<unsigned> joined_;                           ///< first parts of what was filed as one record
  std::map<std::string, std::string> versions_;         ///< of the inbox's files, by name
  std::map<std::string, std::set<unsigned>> contents_;  ///< tokens in the inbox's files, by name
};
