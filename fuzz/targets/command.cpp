// The input is a configuration and a message. The first four lines are the letters of the enabled settings,
// the password, the whitelist and the sender. The rest is the text of the message.

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "commands/CommandTable.h"
#include "daemon/MainLoop.h"
#include "fuzz/shared/FakeCurl.h"
#include "fuzz/shared/Property.h"
#include "storage/MessageStatus.h"

namespace {
std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> pieces;
  std::istringstream stream(text);
  for (std::string piece; std::getline(stream, piece, separator);) pieces.push_back(piece);
  return pieces;
}

// Returns the letter of a command's flag: A, B, C and so on, in the order of the identifiers.
char letter(const CommandRow& row) { return static_cast<char>('A' + row.id - 1); }

struct Case {
  explicit Case(const std::string& input) {
    std::istringstream stream(input);
    std::string whitelist;
    std::getline(stream, on);
    std::getline(stream, password);
    std::getline(stream, whitelist);
    std::getline(stream, sender);
    message.assign(std::istreambuf_iterator<char>(stream), {});
    numbers = split(whitelist, ',');
  }

  bool isOn(char letter) const { return on.find(letter) != std::string::npos; }

  Json::Value configuration() const {
    Json::Value config;
    config["enabled"] = isOn('e');
    for (const CommandRow& row : commandRows)
      if (row.key != nullptr) config[row.key] = isOn(letter(row));
    config["whitelist"]["enabled"] = isOn('w');
    config["whitelist"]["numbers"] = Json::arrayValue;
    for (const std::string& number : numbers) config["whitelist"]["numbers"].append(number);
    config["password"]["enabled"] = isOn('p');
    config["password"]["text"] = password;
    return config;
  }

  std::string on, password, sender, message;
  std::vector<std::string> numbers;
};

// Returns the request that `input` must cause. Returns nullopt if commands are off, if the sender or the
// command is not permitted, or if the password does not match.
std::optional<FakeCurl::Request> permittedRequest(const Case& input) {
  const bool isListed =
      std::find(input.numbers.begin(), input.numbers.end(), input.sender) != input.numbers.end();
  if (!input.isOn('e') || (input.isOn('w') && !isListed)) return std::nullopt;

  std::string text = input.message;
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.erase(0, 1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.pop_back();
  std::vector<std::string> words = split(text, ' ');
  std::string given;
  if (words.size() > 2 && (words[0] == "p" || words[0] == "P")) {
    given = words[1];
    words.erase(words.begin(), words.begin() + 2);
  }
  if (input.isOn('p') && given != input.password) return std::nullopt;
  if (words.empty()) return std::nullopt;

  std::string keyword = words[0];
  for (char& c : keyword) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  for (const CommandRow& row : commandRows) {
    if (row.keyword == nullptr || keyword != std::string("#") + row.keyword || !input.isOn(letter(row)))
      continue;
    std::string body = "{\"recipients\": [\"" + input.sender + "\"], \"args\": [";
    for (std::size_t i = 1; i < words.size(); ++i) body += (i > 1 ? ",\"" : "\"") + words[i] + '"';
    body += "]}";
    return FakeCurl::Request{std::string("http://localhost/api/command/") + row.path, body.c_str()};
  }
  return std::nullopt;
}

class OneMessage final : public SmsProvider {
 public:
  explicit OneMessage(const Json::Value& record) : record_(record) {}
  std::vector<Json::Value> receiveMessages() override { return {record_}; }
  bool sendMessage(const Json::Value& /*message*/) override { return false; }

 private:
  const Json::Value record_;
};

class MemoryInbox final : public ICollectionStorage {
 public:
  void save(const Json::Value& record, int status) override {
    if (status == MessageStatus::Received) records.append(record);
  }
  void remove(const Json::Value& /*filter*/, int /*status*/) override {}
  Json::Value load(const Json::Value& /*filter*/, int /*status*/) override { return Json::arrayValue; }
  void move(const Json::Value& /*filter*/, int /*from*/, int /*to*/) override {}

  Json::Value records{Json::arrayValue};
};
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const Case input(std::string(data, data + size));
  SMSCommand commands(input.configuration());
  property(commands.loadConfig(), "a complete configuration is accepted");

  Json::Value record;
  record["guid"] = "2026010100000000";
  record["source"] = input.sender;
  record["message"] = input.message;
  OneMessage provider(record);
  MemoryInbox inbox;
  RetryState retry;
  FakeCurl::requests.clear();
  FakeCurl::answer = R"({"code": 200})";
  const StorageFaults none;
  CheckedStorage storage(inbox, none);
  InTransit inTransit("/nowhere", "/nowhere");
  runPass(provider, storage, commands, inTransit, {}, retry);

  const std::optional<FakeCurl::Request> permitted = permittedRequest(input);
  property(FakeCurl::requests.size() <= (permitted ? 1U : 0U), "only permitted requests occur");
  property(FakeCurl::requests.size() == (permitted ? 1U : 0U), "a permitted command causes its request");
  if (permitted) {
    property(FakeCurl::requests[0].url == permitted->url, "the keyword determines the path");
    property(FakeCurl::requests[0].body == permitted->body, "the body contains the sender and the words");
    record["isSMSCommand"] = true;
  }
  property(inbox.records.size() == 1 && inbox.records[0] == record,
           "the message is filed once, and marked if its command was executed");
  return 0;
}
