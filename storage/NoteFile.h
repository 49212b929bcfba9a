#pragma once

#include <optional>
#include <string>

/// The files of the spool. A note is a text after a header that reveals any damage:
///
///     veld 1 LENGTH CRC32     LENGTH bytes of text follow; 8 hex digits of their CRC-32, as zlib computes it
///     TEXT
namespace NoteFile {
constexpr char damaged[] = ".damaged";  ///< ends the name of a file that was set aside
constexpr char reserve[] = "reserve";   ///< the file that keeps room for notes

/// The folder of the spool below the folder `root`.
std::string folderBelow(const std::string& root);

/// What a file of the folder is, by its name. A foreign file does not belong to the spool.
enum class Kind { Note, Unfinished, SetAside, Reserve, Foreign };
Kind kindOf(const std::string& name);

/// The parts of a note's name, as in "7.sent-2". The number of any other name is 0.
unsigned numberOf(const std::string& name);
std::string stageOf(const std::string& name);

/// The content of the file for `text`.
std::string framed(const std::string& text);

/// The text in the content of a file; nullopt for content that framed() does not produce.
std::optional<std::string> unframed(const std::string& content);

/// Reads the text of the file at `path`. On failure, sets errno: EBADMSG for a file that is damaged, not
/// regular, or longer than any note; otherwise another try may succeed. Does not block on another process.
std::optional<std::string> read(const std::string& path);

/// Writes a file aside, renames it to `name` and then flushes it. Follows no symbolic link. On failure,
/// removes it and returns false, with errno set. `folder` is a file descriptor.
bool write(int folder, const std::string& name, const std::string& content);
}  // namespace NoteFile
