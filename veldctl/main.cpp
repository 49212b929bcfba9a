#include <getopt.h>

#include <algorithm>
#include <ctime>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <system_error>

#include "daemon/LocalApi.h"
#include "daemon/StartUp.h"
#include "provider/SmsUtilsProvider.h"
#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"
#include "storage/MessageStore.h"
#include "support/Text.h"
#include "veldctl/Follow.h"
#include "veldctl/Health.h"
#include "veldctl/ShortMessage.h"

namespace {

namespace Key = MessageRecord::Key;
using namespace MessageStatus;
using Output::complain;

enum Ending : int { Done = 0, Bad = 1, Unknown = 3, Misused = 64 };

constexpr long apiTimeout = 3;       // seconds
constexpr unsigned waitBound = 60;   // seconds, unless --wait says otherwise
constexpr std::time_t onItsWay = 5;  // seconds for which a message may be in no folder

struct Request {
  Folders folders{messageFolder};
  std::vector<std::string> words;       // behind the command
  std::map<char, std::string> options;  // by their letter

  bool has(char option) const { return options.count(option) > 0; }
};

// A number of nine digits at most; none for any other text.
std::optional<unsigned> numberOf(const std::string& text) {
  if (text.empty() || text.size() > 9 || text.find_first_not_of("0123456789") != std::string::npos) return {};
  return static_cast<unsigned>(std::stoul(text));
}

std::optional<unsigned> numberOf(const Request& request, char option) {
  return request.has(option) ? numberOf(request.options.at(option)) : std::nullopt;
}

// Null when the API does not answer.
Json::Value loadSettings() {
  Json::Value settings;
  loadFromApi(std::string(localApiHost) + settingsPath, settings, apiTimeout);
  return settings;
}

void print(const Message& message, bool json) {
  if (json) {
    Json::Value row;
    row["folder"] = text(message.status);
    row["guid"] = message.name;
    row["record"] = message.record;
    row["fault"] = message.fault;
    std::cout << Output::line(row) << '\n';
    return;
  }
  const auto value = [&](const char* key) {
    const Json::Value& found = MessageRecord::member(message.record, key);
    return found.isConvertibleTo(Json::stringValue) ? found.asString() : Output::line(found);
  };
  const auto column = [](const std::string& shown, int width) {
    std::cout << shown << std::string(std::max(width - static_cast<int>(shown.size()), 0) + 2UL, ' ');
  };
  column(Orvel::Text::printable(message.name), 16);
  column(text(message.status), 8);
  column(Orvel::Text::printable(value(message.status == Received ? Key::Source : Key::Recipient)), 16);
  std::cout << Orvel::Text::printable(message.fault.empty() ? value(Key::Message) : "? " + message.fault)
            << '\n';
}

// The oldest of the outbox go first when "sentLimit" is reached, even those that wait.
void warnOfLimit(const Folders& folders, std::size_t limit) {
  if (limit == 0) complain("\"sentLimit\" is 0: the message is not kept, nor sent again");
  auto outbox = folders.names({Sending, Sent, Failed});
  outbox.resize(limit == 0 || outbox.size() < limit ? 0 : outbox.size() - limit);
  const auto waits = [](const auto& file) { return file.second == Sending; };
  if (const auto waiting = std::count_if(outbox.begin(), outbox.end(), waits); waiting > 0)
    complain("\"sentLimit\" is reached: " + std::to_string(waiting) + " that wait can be discarded unsent");
}

// Waits until a message is sent or has failed. What the tool says of it begins at `logged` of its log.
int await(const Request& request, const std::string& guid, unsigned seconds, std::streamoff logged) {
  const auto is = [&](int status) { return request.folders.changed(status, guid) != 0; };
  FolderWatch watch(request.folders, {Sending, Sent, Failed});
  const std::time_t end = std::time(nullptr) + seconds;
  for (std::time_t seen = std::time(nullptr); !is(Sent) && !is(Failed);) {
    const std::time_t now = std::time(nullptr);
    if (is(Sending)) seen = now;
    const bool gone = now - seen > onItsWay;
    if ((gone || now >= end) && complain(guid + (gone ? " is in no folder any more" : " still waits")))
      return Unknown;
    if (!watch.wait(1000)) return Unknown;
  }
  if (is(Sent)) return Done;
  std::ifstream log(sendLog);
  log.seekg(logged);
  std::string reason = "the tool said nothing";
  for (std::string line; std::getline(log, line);)
    if (!line.empty()) reason = line;
  complain(guid + " failed: " + reason);
  return Bad;
}

int send(const Request& request) {
  const std::string& number = request.words[0];
  std::string message = request.words[1];
  if (message == "-") {
    message.assign(std::istreambuf_iterator<char>(std::cin), {});
    if (!message.empty() && message.back() == '\n') message.pop_back();
  }
  const ShortMessage::Shape shape = ShortMessage::shapeOf(message);
  const char* const fault =
      !ShortMessage::isNumber(number) ? "a number is 20 digits at most, behind one + at most"
      : shape.messages == 0           ? "the text is empty, or no UTF-8, or holds what is no character"
      : shape.messages > ShortMessage::mostMessages ? "the text is too long"
                                                    : nullptr;
  if (fault != nullptr && complain(fault)) return Bad;
  if (!shape.outside.empty()) complain("not in the GSM alphabet: " + shape.outside);
  if (shape.messages > 1) complain("the text takes " + std::to_string(shape.messages) + " messages");

  Json::Value record;
  record[Key::Recipient] = number;
  record[Key::Message] = message;
  if (const auto retries = numberOf(request, 'r')) record[Key::Retries] = *retries;
  const std::streamoff logged = std::ifstream(sendLog, std::ios::ate).tellg();
  const std::string guid = request.folders.queue(record);
  std::cout << (request.has('j') ? "{\"guid\":\"" + guid + "\"}" : guid) << std::endl;
  const Json::Value limit = MessageRecord::member(loadSettings(), SettingsKey::sentLimit);
  if (limit.isUInt()) warnOfLimit(request.folders, limit.asUInt());
  if (!isDaemonRunning()) complain("the daemon does not run: the message waits");
  return request.has('w') ? await(request, guid, numberOf(request, 'w').value_or(waitBound),
                                  std::max<std::streamoff>(logged, 0))
                          : Done;
}

int list(const Request& request) {
  std::vector<int> wanted;
  for (const int status : all)
    if (request.words.empty() || request.words[0] == text(status)) wanted.push_back(status);
  if (wanted.empty()) return Misused;
  const auto files = request.folders.names(wanted);
  const std::size_t skipped =
      files.size() - std::min<std::size_t>(files.size(), numberOf(request, 'n').value_or(-1U));
  for (std::size_t i = skipped; i < files.size(); ++i)
    if (const auto message = request.folders.read(files[i].second, files[i].first))
      print(*message, request.has('j'));
  return Output::complaints() > 0 ? Bad : Done;
}

// The message of that name in the first of the folders that has it.
std::optional<Message> find(const Request& request, const std::vector<int>& statuses) {
  for (const int status : statuses)
    if (auto message = request.folders.read(status, request.words[0])) return message;
  complain("there is no message " + request.words[0]);
  return std::nullopt;
}

int show(const Request& request) {
  const std::optional<Message> message = find(request, {Sending, Failed, Sent, Received});
  if (!message) return Bad;
  print(*message, request.has('j'));
  Json::StreamWriterBuilder writer;
  writer["emitUTF8"] = true;
  if (!request.has('j')) std::cout << Json::writeString(writer, message->record) << '\n';
  return message->fault.empty() ? Done : Bad;
}

int remove(const Request& request) {
  for (const std::string& name : request.words) {
    const auto from = [&](int status) { return request.folders.remove(status, name); };
    if (std::count_if(std::begin(all), std::end(all), from) == 0) complain("there is no message " + name);
  }
  return Output::complaints() > 0 ? Bad : Done;
}

int retry(const Request& request) {
  const std::optional<Message> message = find(request, {Failed});
  if (!message) return Bad;
  if (!message->fault.empty() && complain(message->name + ": " + message->fault)) return Bad;
  if (request.folders.retry(*message, numberOf(request, 'r'))) return Done;
  complain(message->name + " is queued already");
  return Bad;
}

int follow(const Request& request) {
  request.folders.names({Received, Sent, Failed});
  if (Output::complaints() > 0) return Bad;
  follow(request.folders, request.has('s') ? request.options.at('s') : "", request.has('a'));
  return Done;
}

int report(const Request& request, bool whole) {
  using Output::Form;
  Output::Report report{request.has('p') ? Form::Prometheus : request.has('j') ? Form::Json : Form::Text};
  if (whole)
    reportStatus(report, request.folders, stagingFolder, loadSettings());
  else
    reportCheck(report, request.folders, sendLog, loadSettings());
  return report.worst;
}

int status(const Request& request) { return report(request, true); }

int check(const Request& request) { return report(request, false); }

constexpr struct {
  const char* name;
  const char* arguments;
  const char* options;  // the letters of those that it takes
  std::size_t least, most;
  int (*run)(const Request& request);
} commands[] = {
    {"send", "NUMBER TEXT|- [--retries N] [--wait [SECONDS]]", "jrw", 2, 2, send},
    {"list", "[received|sending|sent|failed] [-n N]", "jn", 0, 1, list},
    {"show", "GUID", "j", 1, 1, show},
    {"remove", "GUID...", "j", 1, SIZE_MAX, remove},
    {"retry", "GUID [--retries N]", "jr", 1, 1, retry},
    {"follow", "[--state FILE] [--ack]", "jsa", 0, 0, follow},
    {"status", "[--prometheus]", "jp", 0, 0, status},
    {"check", "", "j", 0, 0, check},
};
constexpr option longOptions[] = {
    {"json", no_argument, nullptr, 'j'},
    {"retries", required_argument, nullptr, 'r'},
    {"wait", optional_argument, nullptr, 'w'},
    {"state", required_argument, nullptr, 's'},
    {"ack", no_argument, nullptr, 'a'},
    {"prometheus", no_argument, nullptr, 'p'},
    {"help", no_argument, nullptr, 'h'},
    {"version", no_argument, nullptr, 'v'},
    {},
};

int usage(std::ostream& stream, int ending) {
  for (const auto& command : commands)
    stream << "veldctl " << command.name << ' ' << command.arguments << '\n';
  stream << "Each takes --json: one object a line. See veldctl(1).\n";
  return ending;
}

// Reads the options and words; false when one is not written well.
bool read(int count, char** words, Request& request) {
  for (int letter; (letter = getopt_long(count, words, "-n:", longOptions, nullptr)) != -1;) {
    // The seconds behind --wait may stand alone, behind the number and the text.
    const bool alone = letter == 'w' && optarg == nullptr && request.words.size() == 3 && optind < count;
    if (alone && numberOf(words[optind])) optarg = words[optind++];
    if (optarg != nullptr && letter != 's' && letter != 1 && !numberOf(optarg)) return false;
    if (letter == 1)
      request.words.emplace_back(optarg);
    else
      request.options[static_cast<char>(letter)] = optarg != nullptr ? optarg : "";
  }
  request.words.insert(request.words.end(), words + optind, words + count);
  return request.has('h') || request.has('v') || !request.words.empty();
}

}  // namespace

int main(int count, char** words) try {
  Request request;
  if (!read(count, words, request)) return usage(std::cerr, Misused);
  if (request.has('h')) return usage(std::cout, Done);
  if (request.has('v')) return std::cout << "veldctl " VELD_VERSION << std::endl ? Done : Bad;
  const std::string name = request.words[0];
  request.words.erase(request.words.begin());
  for (const auto& command : commands) {
    const std::string known = command.options;
    const auto isKnown = [&](const auto& option) { return known.find(option.first) != std::string::npos; };
    if (name != command.name || request.words.size() < command.least || request.words.size() > command.most ||
        !std::all_of(request.options.begin(), request.options.end(), isKnown))
      continue;
    const int ending = command.run(request);
    return ending == Misused ? usage(std::cerr, Misused) : std::cout.flush() ? ending : Bad;
  }
  return usage(std::cerr, Misused);
} catch (const std::system_error& error) {
  complain(error.what());
  return Bad;
}
