#pragma once

#include <optional>
#include <string>

/// One file of the spool: a text under a header that shows any damage.
///
///     veld 1 LENGTH CRC32     LENGTH bytes of text follow; 8 hex digits of their CRC-32, as zlib computes it
///     TEXT
///
/// The calls take a folder by its descriptor. They follow no symbolic link and wait for no other process. Of
/// those that fail, errno tells why.
namespace NoteFile {

/// What a file for `text` holds.
std::string framed(const std::string& text);

/// The text of a file; none for any content that framed() does not make.
std::optional<std::string> unframed(const std::string& content);

enum class Reading {
  Whole,
  Damaged,  ///< also what is no regular file, or longer than any note
  Failed    ///< it could not be opened or read this time
};
Reading read(int folder, const std::string& name, std::string& text);

/// Writes a file under another name first, renames and then flushes it. False, with nothing left, when that
/// fails.
bool write(int folder, const std::string& name, const std::string& text);

/// Fills a file with `size` bytes that take room on a file system that compresses, too. Not flushed.
bool writeReserve(int folder, const std::string& name, std::size_t size);

/// Whether `name` is that of a file whose writing was cut off.
bool isUnfinished(const std::string& name);

}  // namespace NoteFile
