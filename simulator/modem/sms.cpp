// sms: simulates the modem's command-line tool. Accepts only the command lines that veld uses.
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "simulator/modem/Modem.h"
#include "simulator/support/Files.h"
#include "simulator/support/Waiting.h"

namespace {
using Simulator::Modem;
using Simulator::ToolFault;

constexpr char usage[] =
    "sms: usage: sms list unread | sms list read | sms delete read | sms [--verbose] send -f FILE "
    "RECIPIENT\n";

// Returns the operation: "unread", "read", "delete" or "send". Returns an empty string for wrong arguments.
std::string operationOf(const std::vector<std::string>& words) {
  if (words == std::vector<std::string>{"list", "unread"}) return "unread";
  if (words == std::vector<std::string>{"list", "read"}) return "read";
  if (words == std::vector<std::string>{"delete", "read"}) return "delete";
  if (words.size() == 4 && words[0] == "send" && words[1] == "-f" && !words[3].empty()) return "send";
  return "";
}

void hang(Modem& modem, const std::string& operation) {
  std::cout.flush();
  modem.setHanging(operation);
  while (modem.hangs(operation)) Simulator::sleepAMoment();
  modem.setHanging("");
}

int send(Modem& modem, const std::string& file, const std::string& recipient, bool verbose) {
  if (access(file.c_str(), R_OK) != 0) {
    std::cerr << "sms: cannot read " << file << "\n";
    return 1;
  }
  if (!modem.send(recipient, Simulator::readFile(file))) {
    std::cerr << "sms: +CMS ERROR: 21 (short message transfer rejected), recipient " << recipient << "\n";
    return 1;
  }
  if (verbose) std::cout << "sms: sent to " << recipient << "\n";
  return 0;
}

// Prints the unread or the read messages. If `hangs` is true, hangs after half of the output.
void list(Modem& modem, const std::string& operation, bool hangs) {
  std::string listing;
  for (const std::string& message : modem.printed(operation)) listing += message;
  if (operation == "unread") modem.markRead();
  const std::size_t half = hangs ? listing.size() / 2 : 0;
  std::cout << listing.substr(0, half);
  if (hangs) hang(modem, operation);
  std::cout << listing.substr(half);
}
}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> words(argv + 1, argv + argc);
  const bool verbose = !words.empty() && words.front() == "--verbose";
  if (verbose) words.erase(words.begin());
  const std::string operation = operationOf(words);
  if (operation.empty()) {
    std::cerr << usage;
    return 2;
  }
  if (const char* config = std::getenv("SMS_CONFIG"); config == nullptr || *config == '\0') {
    std::cerr << "sms: SMS_CONFIG does not name a configuration file\n";
    return 2;
  }
  Modem modem(Modem::storeFolder);
  const ToolFault fault = modem.takeFault(operation);
  if (fault == ToolFault::Silent) return 0;
  if (fault == ToolFault::Kill) return raise(SIGKILL);
  if (fault == ToolFault::Fail) {
    std::cerr << "sms: the modem does not answer\n";
    return 1;
  }
  const bool hangs = fault == ToolFault::Hang;
  if (operation == "unread" || operation == "read") {
    list(modem, operation, hangs);
    return 0;
  }
  if (hangs) hang(modem, operation);
  if (operation == "send") return send(modem, words[2], words[3], verbose);
  return modem.deleteRead() ? 0 : 1;
}
