#include "storage/MessageRecord.h"

#include <cerrno>
#include <memory>

#include "storage/FileContent.h"
#include "storage/MessageStatus.h"

namespace MessageRecord {
namespace {
Json::Value messageOf(Json::Value record) {
  for (const char* const key : {Key::Status, Key::IsSMSCommand}) record.removeMember(key);
  return record;
}
}  // namespace

bool has(const Json::Value& record, const char* key) { return record.isObject() && record.isMember(key); }

const Json::Value& member(const Json::Value& record, const char* key) {
  return record.isObject() ? record[key] : Json::Value::nullSingleton();
}

std::string guid(const Json::Value& record) {
  const Json::Value& value = member(record, Key::Guid);
  return value.isConvertibleTo(Json::stringValue) ? value.asString() : "";
}

std::uint32_t retriesAfterFailure(const Json::Value& record) {
  const Json::Value& retries = member(record, Key::Retries);
  const bool isNumber = retries.isNumeric() && retries.isConvertibleTo(Json::uintValue);
  return isNumber && retries.asUInt() > 0 ? retries.asUInt() - 1 : 0;
}

// The parser returns false for most faults, but throws if the nesting is too deep.
bool parse(const std::string& text, Json::Value& record, std::string* errors) {
  static const Json::CharReaderBuilder builder;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  try {
    return reader->parse(text.data(), text.data() + text.size(), &record, errors);
  } catch (const Json::Exception& exception) {
    if (errors != nullptr) *errors = exception.what();
    return false;
  }
}

bool isInFile(const Json::Value& record, const std::string& path) {
  FileContent content = FileContent::read(path);
  const bool failed = content.readError != 0 || (content.openError != 0 && content.openError != ENOENT);
  if (failed) content = FileContent::read(path);  // the second try may succeed
  Json::Value inFile;
  if (!parse(content.text, inFile)) return false;
  return record.isObject() && inFile.isObject() && messageOf(record) == messageOf(inFile);
}
}  // namespace MessageRecord

const char* MessageStatus::text(int status) {
  constexpr const char* texts[] = {"unknown", "received", "sending", "sent", "failed"};
  return texts[status >= Received && status <= Failed ? status : 0];
}

const char* MessageStatus::folder(int status) {
  constexpr const char* folders[] = {nullptr, "/inbox/received", "/outbox/sending", "/outbox/sent",
                                     "/outbox/failed"};
  return folders[status >= Received && status <= Failed ? status : 0];
}
