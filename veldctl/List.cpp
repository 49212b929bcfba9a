#include <algorithm>

#include "storage/MessageStatus.h"
#include "support/Text.h"
#include "veldctl/Commands.h"
#include "veldctl/MessageTable.h"
#include "veldctl/Output.h"
#include "veldctl/Times.h"

namespace {
// The conditions of --since and --grep.
struct Filter {
  std::time_t since = 0;
  std::string text;  // in lower case

  bool matches(const Message& message) const {
    const auto holds = [this](const std::string& where) {
      return Orvel::Text::toLowerCase(where).find(text) != std::string::npos;
    };
    return message.time() >= since && (holds(message.number()) || holds(message.text()));
  }
};

std::vector<int> foldersOf(const Request& request) {
  std::vector<int> wanted;
  for (const int status : MessageStatus::all)
    if (request.words.empty() || request.words[0] == MessageStatus::text(status)) wanted.push_back(status);
  if (wanted.empty())
    throw Misuse("unknown folder '" + request.words[0] +
                 "'; the folders are received, sending, sent, failed");
  return wanted;
}

Filter filterOf(const Request& request) {
  Filter filter;
  filter.text = Orvel::Text::toLowerCase(request.text('g'));
  if (!request.has('i')) return filter;
  const auto since = Times::parse(request.text('i'), std::time(nullptr));
  if (!since)
    throw Misuse("--since takes 30min, 2h, 3d, 2026-11-25 or \"2026-11-25 14:00\", not '" +
                 request.text('i') + "'");
  filter.since = *since;
  return filter;
}

// Returns the last `most` messages that match the filter. Reads the newest files first, and only as needed.
std::vector<FileName> lastMatching(const Folders& folders, const std::vector<FileName>& files,
                                   const Filter& filter, std::size_t most) {
  std::vector<FileName> found;
  for (auto file = files.rbegin(); file != files.rend() && found.size() < most; ++file) {
    const Lookup lookup = folders.read(file->status, file->name);
    if (lookup.message && filter.matches(*lookup.message)) found.push_back(*file);
  }
  std::reverse(found.begin(), found.end());
  return found;
}

std::vector<FileName> last(const std::vector<FileName>& files, std::size_t most) {
  const std::size_t skipped = files.size() - std::min(files.size(), most);
  return {files.begin() + static_cast<std::ptrdiff_t>(skipped), files.end()};
}

MessageTable::Form formOf(const Request& request) {
  if (request.isJson()) return MessageTable::Form::Json;
  return request.has('q') ? MessageTable::Form::Guids : MessageTable::Form::Table;
}
}  // namespace

int list(const Request& request) {
  const Filter filter = filterOf(request);
  const Listing listing = request.folders.names(foldersOf(request));
  for (const std::string& error : listing.errors) Output::complain(error);
  const std::size_t most = request.number('n').value_or(UINT32_MAX);
  const bool isFiltered = request.has('i') || request.has('g');
  const auto files =
      isFiltered ? lastMatching(request.folders, listing.files, filter, most) : last(listing.files, most);
  MessageTable table(formOf(request));
  for (const FileName& file : files) {
    const Lookup found = request.folders.read(file.status, file.name);
    if (!found.error.empty()) Output::complain(found.error);
    if (found.message) table.add(*found.message);
  }
  return Output::complaints() > 0 ? Bad : Done;
}
