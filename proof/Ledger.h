#pragma once

#include <json/value.h>

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "proof/Windows.h"

/// Records every message of a world and reports what happened to it. It reads the modem, the message folders
/// and the log, and nothing inside the daemon.
///
/// The whole text identifies a message, and the text of a part identifies the part: each text is used once. A
/// message is under way from its arrival until it is filed for good. It meets every fault of that time.
class Ledger {
 public:
  /// `limit`: the number of messages that the inbox and the outbox each keep. Only displaced ones may vanish.
  explicit Ledger(std::size_t limit) : limit_(limit) {}

  /// Enters a message that will arrive, with the user data and the text of each part. Returns its number.
  std::size_t enterIncoming(const std::string& text, unsigned kind,
                            const std::vector<std::pair<std::string, std::string>>& parts);
  /// Records that a part is on the modem.
  void arrived(std::size_t message, std::size_t part);
  /// Enters a message that another program queued.
  void enterQueued(const std::string& text, const std::string& recipient, bool refused);
  /// Records that the modem accepts all numbers from now on.
  void accept();

  /// What happened since the last observation.
  struct News {
    unsigned faults = 0;             ///< Fault: the active ones
    std::vector<std::string> lines;  ///< of the log
    std::vector<std::string> posts;  ///< bodies of the requests that were posted
    std::string note;                ///< for the history of the messages under way
  };
  /// Reads the modem, the folders and the log.
  void observe(const News& news);
  /// Records that the daemon was killed: every message that is still on the modem has met that fault.
  void died();
  /// Records that all messages so far whose text is part of `within` have met `faults`; null: all messages.
  void met(unsigned faults, const std::string* within = nullptr);

  struct Finding {
    std::string text;                ///< begins with the kind of harm
    const Window* window = nullptr;  ///< null: no window explains it
    std::string history = "";        ///< every observation of the message from its arrival to its end
  };
  /// Returns every harm, at the end, when the modem has sent `sent`.
  std::vector<Finding> settle(const std::vector<Json::Value>& sent) const;

  std::size_t entered() const { return messages_.size(); }
  std::size_t underWay() const { return underWay_.size(); }

 private:
  struct Part {
    std::string userData;
    enum { Coming, OnModem, Taken } place = Coming;
    bool filed = false;
  };
  struct Message {
    std::string text, recipient;
    unsigned kind;
    bool refused = false;
    std::vector<Part> parts = {};      // none of an outgoing message
    unsigned met = 0;                  // faults
    std::size_t first = 0, last = 0;   // observations
    std::set<std::string> names = {};  // of the files that hold it or held it
    std::set<std::string> paths = {};  // of the files that hold it now
    bool whole = false, displaced = false, retries = false;
    [[nodiscard]] bool isIn(const std::string& box) const;
    [[nodiscard]] bool isDone() const;
    [[nodiscard]] std::size_t saves() const { return parts.empty() ? 1 : parts.size(); }
  };
  // A file of a message folder.
  struct File {
    std::string version, content = {};
    unsigned faults = 0;                      // when it appeared
    std::optional<std::size_t> message = {};  // the one that it holds, whole or in parts
    std::set<std::size_t> parts = {};
    bool whole = false, retries = false;
  };
  using Files = std::map<std::string, File>;  // by path
  // Reports a harm to a message, with a detail, and the faults that may explain it.
  using Find = std::function<void(unsigned harm, const std::string& detail, unsigned faults)>;

  std::size_t enter(Message message);
  void observeModem();
  void observeFolders(const std::vector<std::string>& folders, Files& files, unsigned faults);
  void observeLog(const std::string& line);
  std::size_t appear(const std::string& path, const File& file);
  File read(const std::string& path, unsigned faults) const;
  static Finding strayIn(const std::string& path, const File& file);
  void tell(const std::string& event) { history_.back() += "\n    " + event; }
  unsigned metBy(const Message& message) const;
  void judgeIncoming(const Message& message, std::size_t posts, const Find& find) const;
  void judgeOutgoing(const Message& message, std::size_t sendings, const Find& find) const;
  std::string historyOf(const Message& message) const;

  std::size_t limit_;
  std::vector<Message> messages_;
  std::map<std::string, std::size_t> byText_;                          // of whole messages
  std::map<std::string, std::pair<std::size_t, std::size_t>> byPart_;  // message and part
  std::set<std::size_t> underWay_;
  std::map<std::string, unsigned> said_;  // faults that the log reports, by the guid of the message
  std::multiset<std::string> posts_;      // first arguments
  Files inbox_, outbox_;
  std::vector<std::string> history_;  // what each observation saw
  std::vector<Finding> strays_;       // that the limit has displaced
};
