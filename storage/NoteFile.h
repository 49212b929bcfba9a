#pragma once

#include <optional>
#include <string>

/// One file of the spool: a text after a header that reveals any damage.
///
///     veld 1 LENGTH CRC32     LENGTH bytes of text follow; 8 hex digits of their CRC-32, as zlib computes it
///     TEXT
namespace NoteFile {

/// The content of the file for `text`.
std::string framed(const std::string& text);

/// The text in the content of a file; nullopt for content that framed() does not produce.
std::optional<std::string> unframed(const std::string& content);

enum class Reading {
  Whole,
  Damaged,  ///< also: not a regular file, or longer than any note
  Failed    ///< it could not be opened or read, with errno set; another try may succeed
};

/// Reads the file at `path`. Does not block on another process.
Reading read(const std::string& path, std::string& text);

/// Writes a file under the name `aside`, renames it to `name` and then flushes it. Follows no symbolic link.
/// On failure, removes it and returns false, with errno set. `folder` is a file descriptor.
bool write(int folder, const std::string& aside, const std::string& name, const std::string& content);

}  // namespace NoteFile
