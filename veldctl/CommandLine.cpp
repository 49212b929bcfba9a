#include "veldctl/CommandLine.h"

#include <getopt.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "veldctl/Commands.h"

namespace {
using CommandLine::Parsed;

const std::vector<Option> options = {
    {'r', false, "retries", Option::Number, "N", "repeat a failed send up to N times"},
    {'w', false, "wait", Option::OptionalNumber, "[SECONDS]",
     "wait at most SECONDS (default 60) until the message is sent or has failed"},
    {'n', true, "last", Option::Number, "N", "list only the last N messages"},
    {'i', false, "since", Option::Text, "TIME",
     "list only messages since TIME: 30min, 2h, 3d, 2026-11-25 or \"2026-11-25 14:00\""},
    {'g', false, "grep", Option::Text, "TEXT",
     "list only messages whose number or text contains TEXT, ignoring case"},
    {'q', true, "quiet", Option::None, "", "print only guids"},
    {'s', false, "state", Option::Text, "FILE", "remember reported events in FILE across restarts"},
    {'a', false, "ack", Option::None, "", "wait for a line on standard input after each event"},
    {'x', false, "exec", Option::Text, "PROGRAM",
     "run PROGRAM for each event; repeat until it exits with status 0"},
    {'p', false, "prometheus", Option::None, "", "print metrics in the format of Prometheus"},
    {'j', false, "json", Option::None, "", "print one JSON object per line"},
    {'h', true, "help", Option::None, "", "print this help"},
    {'v', false, "version", Option::None, "", "print the version"},
};

constexpr char everywhere[] = "hv";  // the letters of the options that every command accepts

bool takes(const Command& command, char letter) {
  return std::strchr(command.options, letter) != nullptr || std::strchr(everywhere, letter) != nullptr;
}

const Option& optionOf(int letter) {
  return *std::find_if(options.begin(), options.end(),
                       [=](const Option& each) { return each.letter == letter; });
}

const Command& commandOf(const std::string& name) {
  std::string names;
  for (const Command& command : commands) {
    if (name == command.name) return command;
    names += (names.empty() ? "" : ", ") + std::string(command.name);
  }
  throw Misuse("unknown command '" + name + "'; the commands are " + names);
}

std::vector<option> longOptions() {
  constexpr int arguments[] = {no_argument, required_argument, optional_argument, required_argument};
  std::vector<option> all;
  all.reserve(std::size(options) + 1);
  for (const Option& each : options) all.push_back({each.name, arguments[each.value], nullptr, each.letter});
  all.push_back({});
  return all;
}

// "-" makes getopt_long() keep the order of the words. ":" makes it return ':' for a missing value.
std::string shortOptions() {
  std::string all = "-:";
  for (const Option& each : options) {
    if (!each.isShort) continue;
    all += each.letter;
    if (each.value != Option::None) all += ":";
  }
  return all;
}

std::string written(const Option& option) {
  return option.isShort ? std::string("-") + option.letter : std::string("--") + option.name;
}

void checkValue(const Option& option, const std::string& value) {
  const bool isNumber = option.value == Option::Number || option.value == Option::OptionalNumber;
  if (!isNumber || readNumber(value)) return;
  const char* const what = option.letter == 'w' ? "seconds" : "a number";
  throw Misuse(written(option) + " takes " + what + " up to 4294967295, not '" + value + "'");
}

[[noreturn]] void refuse(const Parsed& parsed, const std::string& word) {
  const bool isText =
      parsed.command != nullptr && parsed.command->run == send && word.compare(0, 2, "--") != 0;
  throw Misuse("unknown option '" + word + "'" +
               (isText ? "; write -- before a text that begins with '-'" : ""));
}

// Takes the next word as the value of --wait. Null if no value follows, or if the command lacks an argument.
const char* secondsOf(const Parsed& parsed, int count, char** words) {
  if (parsed.command == nullptr || parsed.request.words.size() < parsed.command->most) return nullptr;
  if (optind >= count || words[optind][0] == '-') return nullptr;
  return words[optind++];
}

void takeWord(Parsed& parsed, const std::string& word) {
  if (parsed.command != nullptr)
    parsed.request.words.push_back(word);
  else if (word == "help")
    parsed.wantsHelp = true;
  else
    parsed.command = &commandOf(word);
}

void takeOption(Parsed& parsed, const Option& option, const char* value) {
  if (value != nullptr) checkValue(option, value);
  parsed.request.options[option.letter] = value != nullptr ? value : "";
}

void checkOptions(const Parsed& parsed) {
  for (const auto& [letter, value] : parsed.request.options)
    if (!takes(*parsed.command, letter))
      throw Misuse(std::string(parsed.command->name) + " does not take " + written(optionOf(letter)));
}

std::string usage(const Command& command) {
  const std::string arguments = command.arguments;
  return std::string("veldctl ") + command.name + (arguments.empty() ? "" : " ") + arguments;
}

void checkWords(const Parsed& parsed) {
  const Command& command = *parsed.command;
  const auto& words = parsed.request.words;
  if (words.size() < command.least) throw Misuse("an argument is missing; usage: " + usage(command));
  if (words.size() > command.most)
    throw Misuse("unexpected argument '" + words[command.most] + "'; usage: " + usage(command) +
                 (command.run == send ? "; quote a text of several words" : ""));
}

std::string describe(const Option& option) {
  const std::string value = option.valueName;
  const std::string form = (option.isShort ? written(option) + ", " : "") + "--" + option.name +
                           (value.empty() ? "" : " " + value);
  char line[160];
  std::snprintf(line, sizeof(line), "  %-20s  %s\n", form.c_str(), option.help);
  return line;
}

void readWords(int count, char** words, Parsed& parsed) {
  const std::vector<option> known = longOptions();
  const std::string letters = shortOptions();
  opterr = 0;
  for (int at = optind, letter = 0; letter != -1; at = optind) {
    letter = getopt_long(count, words, letters.c_str(), known.data(), nullptr);
    if (letter == '?') refuse(parsed, words[at]);
    if (letter == ':') throw Misuse(std::string(words[at]) + " needs a value");
    const char* value = optarg;
    if (letter == 'w' && value == nullptr) value = secondsOf(parsed, count, words);
    if (letter == 1)  // getopt_long() has found an argument
      takeWord(parsed, value);
    else if (letter != -1)
      takeOption(parsed, optionOf(letter), value);
  }
  for (; optind < count; ++optind) takeWord(parsed, words[optind]);
}
}  // namespace

std::optional<std::uint32_t> readNumber(const std::string& text) {
  constexpr std::size_t mostDigits = 10;
  const bool isDigits = text.find_first_not_of("0123456789") == std::string::npos;
  if (text.empty() || text.size() > mostDigits || !isDigits) return std::nullopt;
  const unsigned long long value = std::stoull(text);
  if (value > UINT32_MAX) return std::nullopt;
  return static_cast<std::uint32_t>(value);
}

std::optional<std::uint32_t> Request::number(char letter) const { return readNumber(text(letter)); }

void CommandLine::parse(int count, char** words, Parsed& parsed) {
  readWords(count, words, parsed);
  parsed.wantsHelp = parsed.wantsHelp || parsed.request.has('h');
  parsed.wantsVersion = parsed.request.has('v');
  if (parsed.wantsHelp || parsed.wantsVersion) return;
  if (parsed.command == nullptr) throw Misuse("a command is missing");
  checkOptions(parsed);
  checkWords(parsed);
}

std::string CommandLine::help() {
  std::string text = "veldctl sends SMS messages and shows the messages of the gateway.\n\n";
  for (const Command& command : commands) {
    char line[160];
    std::snprintf(line, sizeof(line), "  %-8s  %s\n", command.name, command.help);
    text += line;
  }
  return text +
         "\n\"veldctl COMMAND --help\" prints the arguments and options of a command. See also veldctl(1).\n";
}

std::string CommandLine::help(const Command& command) {
  std::string text = usage(command) + "\n  " + command.help + "\n\n";
  for (const Option& option : options)
    if (takes(command, option.letter) && option.letter != 'v') text += describe(option);
  return text + "\nExample: " + command.example + "\n";
}
