#include "veldctl/StateFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <system_error>

#include "storage/MessageRecord.h"
#include "veldctl/Output.h"
#include "veldctl/Queue.h"

namespace {
int openLock(const std::string& path) {
  constexpr mode_t mode = 0600;
  const int file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, mode);
  if (file < 0) throw std::system_error(errno, std::generic_category(), path);
  return file;
}

// Adds one member of the file to `known`. Returns false if the member has a wrong form.
bool take(const std::string& key, const Json::Value& member, News::AllKnown& known) {
  if (!member.isArray() || member.size() != 2 || !member[0].isInt64() || !member[1].isBool()) return false;
  known[key] = {member[0].asInt64(), member[1].asBool()};
  return true;
}

bool takeAll(const Json::Value& members, News::AllKnown& known) {
  if (!members.isObject()) return false;
  for (auto member = members.begin(); member != members.end(); ++member)
    if (!take(member.name(), *member, known)) return false;
  return true;
}
}  // namespace

StateFile::StateFile(std::string path) : path_(std::move(path)), lock_(openLock(path_ + ".lock")) {
  if (flock(lock_, LOCK_EX | LOCK_NB) == 0) return;
  close(lock_);
  throw std::runtime_error("another veldctl uses " + path_);
}

StateFile::~StateFile() { close(lock_); }

std::optional<News::AllKnown> StateFile::read() const {
  std::ifstream stream(path_);
  if (!stream.is_open()) return std::nullopt;
  News::AllKnown known;
  const std::string text(std::istreambuf_iterator<char>(stream), {});
  if (text.empty()) return known;
  Json::Value members;
  if (MessageRecord::parse(text, members) && takeAll(members, known)) return known;
  Output::complain(path_ + " is not a state file: every message is reported again");
  return News::AllKnown();
}

void StateFile::write(const News::AllKnown& known) {
  if (written_ && *written_ == known) return;
  Json::Value members(Json::objectValue);
  for (const auto& [key, each] : known) {
    members[key].append(Json::Int64(each.changed));
    members[key].append(each.lacksParts);
  }
  replaceFile(path_, path_ + ".new", Output::line(members) + "\n");
  written_ = known;
  time_ = std::time(nullptr);
}

void StateFile::writeSoon(const News::AllKnown& known) {
  if (std::time(nullptr) != time_) write(known);
}
