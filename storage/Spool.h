#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/FileDescriptor.h"
#include "support/NonCopyable.h"

/// Notes of what is on its way between the modem and the message folders, on the disk so that they outlive
/// the daemon. A note is one file in the folder `spool` beside the message folders (mode 700). Its content
/// never changes; its name says how far it is:
///
///     spool/7.received-2-3    NUMBER.STAGE; the stages are those of SpoolEntry.h
///     spool/reserve           room that a full disk leaves for notes
///
///     File                  Written by      Gone after   After a kill or a power cut
///     NUMBER.STAGE.new      add, replace    its rename   removed by the next open
///     NUMBER.STAGE          add, replace    remove       read by the next pass
///     NUMBER.STAGE.damaged  read, setAside  never        stays, for a person to look at
///     reserve               open            a full disk  stays
///
/// "Flushed" means on the disk before the call returns. What is not flushed outlives the daemon, but no power
/// cut: a rename may then be undone. A note is renamed before it is flushed, so that one transaction of the
/// file system carries both; a file that a power cut left torn shows by its checksum, and nothing depends on
/// it yet.
///
/// Where the folder cannot be written, one line of the log says so and the notes live in memory; each open()
/// tries again. Of two daemons on one folder the second does the same. No call throws or blocks on what lies
/// in the folder.
///
/// Not taken: one journal of changes (a torn line takes its neighbours along, and a reader replays), and a
/// database (its library is larger than the daemon).
class Spool : private Orvel::NonCopyable {
 public:
  struct Note {
    std::string stage;  ///< letters, digits and "-"
    std::string text;
  };

  /// `root` is the folder above the message folders. Nothing is touched before open().
  explicit Spool(const std::string& root);

  /// One pass's use of the folder, which is open and locked until the object ends.
  class Pass : private Orvel::NonCopyable {
   public:
    Pass(Spool& spool, std::vector<unsigned> noteNumbers) : numbers(std::move(noteNumbers)), spool_(spool) {}
    ~Pass() { spool_.folder_.reset(); }

    const std::vector<unsigned>
        numbers;  ///< of the notes that earlier passes left, in the order of their adding

   private:
    Spool& spool_;
  };

  /// Begins a pass: makes the folder if it is missing, locks out other daemons, and reads what lies there.
  [[nodiscard]] Pass open();

  /// None when the note is gone, cannot be read now (the next pass tries again), or is damaged: it is then
  /// set aside.
  std::optional<Note> read(unsigned number);

  /// Adds a note; flushed. Its number is above that of every other.
  unsigned add(const Note& note);

  /// Adds a note in place of another; flushed. Its number; that of the old one, which stays, when it cannot
  /// be written.
  unsigned replace(unsigned number, const Note& note);

  /// Gives a note another stage. False when that, or the flush if one is asked for, did not succeed.
  bool rename(unsigned number, const std::string& stage, bool flushed);

  /// Removes a note; not flushed.
  void remove(unsigned number);

  /// Keeps a note whose text makes no sense out of the way, with a line in the log.
  void setAside(unsigned number);

  /// What a spool holds, for a program that only looks.
  struct Survey {
    bool readable = true;
    unsigned damaged = 0;  ///< notes that were set aside, or would be
    std::vector<Note> notes;
  };
  static Survey survey(const std::string& root);

 private:
  struct Slot {
    std::string stage;
    std::optional<std::string> unwritten;  ///< the text of a note that is in memory only
  };

  bool acquire();
  bool takeIn();
  void takeIn(const std::string& name);
  void keepReserve();
  bool write(unsigned number, const Note& note);
  bool makeRoom();
  void moveAside(const std::string& name);
  [[nodiscard]] std::string nameOf(unsigned number) const;
  void complain(const char* what);

  const std::string path_;
  Orvel::FileDescriptor folder_;
  std::map<unsigned, Slot> slots_;
  unsigned last_ = 0;        ///< the highest number in use
  bool complained_ = false;  ///< once, until the folder can be written again
};
