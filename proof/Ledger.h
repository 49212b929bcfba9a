#pragma once

#include <json/value.h>

#include <map>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "proof/Shelf.h"
#include "proof/Windows.h"

/// Records every message of a world and reports what happened to it. It reads the modem, the message folders
/// and the log, and nothing inside the daemon.
///
/// The whole text identifies a message, and the text of a part identifies the part: each text is used once. A
/// message is on its way from its arrival until it is filed for good, and meets every fault of that time.
class Ledger {
 public:
  /// `limit`: the number of messages that the inbox and the outbox each keep. Only displaced ones may vanish.
  explicit Ledger(unsigned limit)
      : inbox_{{"received"}, limit}, outbox_{{"sending", "sent", "failed"}, limit} {}

  /// Enters a message that will arrive, with the user data and the text of each part. Returns its number.
  unsigned enterIncoming(const std::string& text, unsigned kind,
                         const std::vector<std::pair<std::string, std::string>>& parts);
  /// Records that a part is on the modem.
  void arrived(unsigned message, std::size_t part);
  /// Enters a message that another program queued.
  void enterQueued(const std::string& text, const std::string& recipient, bool refused);
  /// Records that the modem accepts all numbers from now on.
  void accept();

  /// What happened since the last observation.
  struct News {
    unsigned faults = 0;             ///< Fault: the active ones
    std::vector<std::string> lines;  ///< of the log
    std::vector<std::string> posts;  ///< bodies of the requests that were posted
    std::string note;                ///< for tell()
  };
  /// Reads the modem, the folders and the log.
  void observe(const News& news);
  /// Records that the daemon was killed: every message on its way has met that fault.
  void died();
  /// Records that all messages so far, or those whose text is part of `within`, have met `faults`.
  void met(unsigned faults, const std::string* within = nullptr);

  struct Finding {
    std::string text;      ///< begins with the kind of harm
    const Window* window;  ///< null: no window explains it
    int message;           ///< -1: none
  };
  /// Returns every harm, at the end, when the modem has sent `sent`.
  std::vector<Finding> settle(const std::vector<Json::Value>& sent) const;

  /// Writes the history of a message, and every observation from its arrival to its end.
  void tell(std::ostream& out, unsigned message) const;
  /// Counts the messages that met the fault of a window.
  unsigned exposedTo(const Window& window) const;
  std::size_t entered() const { return messages_.size(); }
  std::size_t underWay() const { return active_.size(); }

 private:
  struct Part {
    std::string userData;
    enum { Coming, OnModem, Taken } place = Coming;
    bool filed = false;
    unsigned faults = 0;  ///< when it was taken
  };
  struct Message {
    std::string text, number;
    unsigned kind = Kind::Text;
    bool refused = false;
    std::vector<Part> parts = {};       // none of an outgoing message
    unsigned met = 0;                   // Fault
    std::size_t first = 0, last = 0;    // looks
    std::set<std::string> names = {};   // of the files that hold it or held it
    std::set<std::string> places = {};  // where files hold it now
    unsigned gone = 0;                  // Fault: those active when a file no longer held it
    bool whole = false, displaced = false, retries = false;
    std::string history = {};
    [[nodiscard]] bool isIn(const std::string& box) const;
    [[nodiscard]] bool isDone() const;
  };
  struct File {
    int message = -1;  // the message in the file, whole or in parts
    std::set<std::size_t> parts = {};
    bool whole = false, retries = false;
    std::string content = {};
    unsigned faults = 0;  // when it appeared
  };

  void observeModem(unsigned faults);
  void observeShelf(Shelf& shelf, unsigned faults);
  void observeLog(const std::vector<std::string>& lines);
  File read(const std::string& content) const;
  std::size_t waiting(bool incoming) const;
  std::size_t appear(const std::string& place, unsigned faults);
  static Finding stray(const std::string& place, const File& file);
  unsigned metBy(const Message& message) const;
  Message& note(int message, const std::string& event);
  std::size_t postsOf(const std::string& text) const;
  void judgeIncoming(std::vector<Finding>& findings, unsigned number, std::size_t posts) const;
  void judgeOutgoing(std::vector<Finding>& findings, unsigned number, std::size_t sendings) const;
  void find(std::vector<Finding>& findings, Harm harm, unsigned number, const std::string& detail,
            unsigned met) const;

  std::vector<Message> messages_;
  std::map<std::string, unsigned> byText_;                          // of whole messages
  std::map<std::string, std::pair<unsigned, std::size_t>> byPart_;  // of parts
  std::map<std::string, unsigned> said_;      // faults reported by the log, by the guid of the message
  std::map<std::string, std::size_t> posts_;  // by first argument
  std::set<unsigned> active_;
  std::size_t repeated_ = 0;  // parts that were taken since the last look, and filed before it
  Shelf inbox_, outbox_;
  std::map<std::string, File> files_;  // by place
  std::vector<std::string> looks_;
  std::vector<Finding> strays_;  // that the limit has displaced
};
