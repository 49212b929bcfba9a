#pragma once

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/FileDescriptor.h"
#include "support/NonCopyable.h"

/// Notes of the messages on their way between the modem and the message folders, kept on the disk so that
/// they outlive the daemon. A note is one file in the folder `spool` beside the message folders (mode 700).
/// Its content never changes; its name holds its number and its stage:
///
///     spool/7.received-2      NUMBER.STAGE; the stages are those of SpoolEntry.h
///     spool/reserve           keeps room for notes on a full disk
///
///     File                  Written by      Gone after   After a kill or a power cut
///     NUMBER.STAGE.new      add, replace    its rename   removed by the next open
///     NUMBER.STAGE          add, replace    remove       read by the next pass
///     NUMBER.STAGE.damaged  read, setAside  never        stays, for a person to look at
///     reserve               open            a full disk  stays
///
/// "Flushed" means durable before the call returns. A change that is not flushed survives the end of the
/// daemon, but a power cut may undo it. A note is renamed before it is flushed, so that one file-system
/// transaction carries both. A power cut can thus leave a torn note; its checksum reveals it, and nothing
/// depends on it yet.
///
/// If the folder cannot be written, one log line says so and notes stay in memory; each open() tries again. A
/// second daemon on the folder does the same. No content of the folder makes a call throw or block.
class Spool : private Orvel::NonCopyable {
 public:
  struct Note {
    std::string stage;  ///< letters, digits and "-"
    std::string text;
  };

  /// `root` is the folder above the message folders. Only open() and later calls touch the disk.
  explicit Spool(const std::string& root);

  /// Keeps the folder open and locked for one pass.
  class Pass : private Orvel::NonCopyable {
   public:
    Pass(Spool& spool, std::vector<std::string> noteNames) : names(std::move(noteNames)), spool_(spool) {}
    ~Pass() { spool_.folder_.reset(); }

    const std::vector<std::string> names;  ///< of the notes that earlier passes left, oldest first

   private:
    Spool& spool_;
  };

  /// Begins a pass: creates the folder if it is missing, locks it against other daemons, and lists its notes.
  [[nodiscard]] Pass open();

  /// Reads a note. Nullopt if it is gone, cannot be read now (the next pass tries again), or is damaged; a
  /// damaged note is set aside.
  std::optional<Note> read(const std::string& name);

  /// Adds a note, flushed. Returns its name; its number is higher than all others.
  std::string add(const Note& note);

  /// Replaces a note by a new one, flushed, and changes `name` to its name. If the new one cannot be written,
  /// keeps the old one on the disk and its name. An empty name stands for no note. False if the old one
  /// stays.
  bool replace(std::string& name, const Note& note);

  /// Changes the stage of a note, and `name`. False for an empty name, and if the rename, or the
  /// flush if requested, fails.
  bool rename(std::string& name, const std::string& stage, bool flushed);

  /// Removes a note; not flushed. An empty name stands for no note. False if the note stays.
  bool remove(const std::string& name);

  /// Sets aside a note whose text is invalid: renames it to NUMBER.STAGE.damaged and logs that.
  void setAside(const std::string& name);

 private:
  bool acquire();
  bool list(std::vector<std::string>& names);
  void keepReserve();
  bool write(const std::string& name, const std::string& text);
  bool makeRoom();
  void complain(const char* what);

  const std::string path_;
  Orvel::FileDescriptor folder_;
  std::map<unsigned, Note> unwritten_;  ///< the notes that are in memory only, by number
  unsigned last_ = 0;                   ///< the highest number in use
  bool complained_ = false;             ///< a failure was logged; no write has succeeded since
};
