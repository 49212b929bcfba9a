#pragma once

#include <json/json.h>

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "storage/ICollectionStorage.h"
#include "support/NonCopyable.h"

/// What is on its way between the modem and the message folders, written down so that it outlives the daemon.
///
/// The modem's only copy of a message is deleted before the message is filed, and a message that was sent
/// leaves its folder before it lies in the next one. Here each stays until its file is on the disk: in one
/// file beside the message folders, of mode 600, which is gone when nothing is on its way. A line of it is a
/// JSON array of changes to entries; one that is cut short at the end was never finished, and counts for
/// nothing.
///
/// "Flushed" means on the disk before the call returns; what is not flushed outlives the daemon, but no power
/// cut. Where the file cannot be written, one line says so, and the entries live in memory until it can. Of
/// two daemons the second does the same.
class Journal : private Orvel::NonCopyable {
 public:
  struct Entry {
    Json::Value record;  ///< as it is to be filed; of a send without an answer, as it was queued
    int from = 0;        ///< the status that it leaves; 0 for a received message that replaces none
    int to = 0;          ///< the status under which it is to be filed; 0 for a send without an answer
    bool filed = false;
    bool tried = false;  ///< its filing was tried, and failed
    std::string file;    ///< which file it was under `from`: inode and time
  };

  /// `root` is the folder above the message folders. Under a limit of 0 nothing is kept, so nothing is
  /// awaited.
  Journal(const std::string& root, std::uint32_t receivedLimit, std::uint32_t sentLimit);
  ~Journal();

  enum class Reading { Whole, Torn, Failed };  ///< of a torn one, what stands before the tear
  /// What the journal of a store holds, for a program that only looks; nothing without one. Failed, with
  /// errno, when it cannot be read, and torn where a line is none.
  static Reading read(const std::string& root, std::vector<Entry>& entries);

  /// Whether a received message of that guid is filed or on its way.
  [[nodiscard]] bool isTaken(const std::string& guid) const;

  /// Takes in what the modem is about to delete; flushed.
  void received(const std::vector<Json::Value>& records);

  /// Takes in stored messages that were filled from received parts, before they replace what is stored, and
  /// lets go of the parts, which are named by their guids; flushed.
  void merged(const std::vector<std::string>& parts, const std::vector<Json::Value>& records);

  /// The received messages that are stored, those that wait to be replaced as they will be.
  [[nodiscard]] Json::Value withUnfiled(Json::Value stored);

  /// Says which record is to be sent next, and that its file lies under `from`; nothing is written yet. A
  /// record whose file has another name than its guid is not noted at all, here and in the next two calls.
  void prepare(const Json::Value& record, int from);

  /// To be called right before the modem is asked to send it; not flushed.
  void begun();

  /// To be called right after the modem has answered, or refused to be asked: where the record is to go;
  /// flushed. A further call says nothing new.
  void answered(bool sent);

  /// Whether the file of `record` under `from` is one whose send was answered, but which could not be moved.
  [[nodiscard]] bool isAnswered(const Json::Value& record, int from) const;

  /// Whether an earlier daemon ended while it sent `record`: it goes behind the others.
  [[nodiscard]] bool isBehind(const Json::Value& record) const;

  /// To be called by the folders after each save: whether `record` lies under `status` now.
  void saved(const Json::Value& record, int status, bool good);

  /// Begins a pass: reads what an earlier daemon left, when it is the first one, and files what was sent.
  void catchUp(ICollectionStorage& storage);

  /// The received messages that an earlier pass left unfiled, in their order; while the folders take nothing,
  /// only the first of them.
  [[nodiscard]] std::vector<Json::Value> left() const;

  /// Whether a received message that was left has been through its own pass but for its filing.
  [[nodiscard]] bool wasTried(const Json::Value& record) const;

  /// Lets go of what is filed, after flushing the store, if there is any; and of a send that an exception
  /// broke off before the modem was asked.
  void settle();

 private:
  using Entries = std::map<unsigned, Entry>;

  [[nodiscard]] bool keeps(int status) const;
  [[nodiscard]] bool isDone(const Entry& entry) const;
  [[nodiscard]] bool liesUnderFrom(const Entry& entry) const;
  [[nodiscard]] std::string fileOf(int status, const std::string& guid) const;
  [[nodiscard]] Entries::iterator findUnfiled(const std::string& guid, int to);
  void dropAttempt();
  void adopt(Entry entry);
  [[nodiscard]] bool isOnItsWay(const std::string& guid) const;
  [[nodiscard]] std::string freeGuid(const std::string& guid) const;

  bool acquire();
  bool load();
  void note(const Json::Value& change, bool flushed);
  void noteAll(const Json::Value& changes, bool flushed);
  bool append(const Json::Value& changes, bool flushed);
  bool rewrite(bool flushed);
  void removeFile();
  void complain(const char* what);

  const std::string root_;
  const std::string path_;
  const std::uint32_t receivedLimit_;
  const std::uint32_t sentLimit_;

  Entries entries_;
  unsigned nextId_ = 1;
  std::optional<Entry> attempt_;  // the send that has no answer yet
  unsigned attemptId_ = 0;        // 0 until it is noted
  std::set<std::string> behind_;
  bool storeFails_ = false;  // the last save did

  int directory_ = -1;
  int file_ = -1;
  bool owned_ = false;
  bool exists_ = false;      // there is a file
  bool named_ = false;       // its name is on the disk
  bool complained_ = false;  // once, until the file can be written again
};
