#pragma once

#include <optional>
#include <string>

/// One file of the spool: a text after a header that reveals any damage.
///
///     veld 1 LENGTH CRC32     LENGTH bytes of text follow; 8 hex digits of their CRC-32, as zlib computes it
///     TEXT
///
/// The functions take the folder as a file descriptor. They follow no symbolic link and do not block on
/// another process. A function that fails sets errno.
namespace NoteFile {

/// The content of the file for `text`.
std::string framed(const std::string& text);

/// The text in the content of a file; nullopt for content that framed() does not produce.
std::optional<std::string> unframed(const std::string& content);

enum class Reading {
  Whole,
  Damaged,  ///< also: not a regular file, or longer than any note
  Failed    ///< it could not be opened or read; another try may succeed
};
Reading read(int folder, const std::string& name, std::string& text);

/// Writes a file under a temporary name, renames it and then flushes it. On failure, removes it and returns
/// false.
bool write(int folder, const std::string& name, const std::string& text);

/// Creates a file of `size` bytes that a compressing file system cannot shrink. Not flushed.
bool writeReserve(int folder, const std::string& name, std::size_t size);

/// Whether `name` is the temporary name of an interrupted write.
bool isUnfinished(const std::string& name);

}  // namespace NoteFile
