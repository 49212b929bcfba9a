#include "standalone/sms/PortModem.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <random>
#include <thread>

namespace Standalone {
namespace {
constexpr char noSim[] = "no SIM";
constexpr char locked[] = "the SIM is locked: it requires its ";

// Splits the values of an answer at commas. Removes quotes, and blanks outside quotes.
std::vector<std::string> items(const std::string& text) {
  std::vector<std::string> all(1);
  bool isQuoted = false;
  for (const char c : text) {
    if (c == '"')
      isQuoted = !isQuoted;
    else if (c == ',' && !isQuoted)
      all.emplace_back();
    else if (c != ' ' || isQuoted)
      all.back() += c;
  }
  return all;
}

std::string item(const std::string& text, std::size_t at) {
  const std::vector<std::string> all = items(text);
  return at < all.size() ? all[at] : "";
}

unsigned numberOf(const std::string& text) {
  unsigned number = 0;
  return std::sscanf(text.c_str(), "%u", &number) == 1 ? number : 0;
}

// Names the registration states of 3GPP TS 27.007, 7.2.
std::string registrationName(unsigned code) {
  constexpr const char* names[] = {"idle", "home", "searching", "denied", "unknown", "roaming"};
  if (code < std::size(names)) return names[code];
  if (code == 6) return "home";
  return code == 7 ? "roaming" : "unknown";
}

bool isRegistered(const std::string& registration) {
  return registration == "home" || registration == "roaming";
}

// Explains common error lines (3GPP TS 27.005, 3.2.5, and TS 24.011, E.2). Returns other lines unchanged.
std::string reasonOf(const std::string& error) {
  constexpr std::pair<const char*, const char*> reasons[] = {
      {"+CMS ERROR: 1", "no such number"},
      {"+CMS ERROR: 8", "barred by the operator"},
      {"+CMS ERROR: 21", "rejected by the network"},
      {"+CMS ERROR: 28", "no such subscriber"},
      {"+CMS ERROR: 38", "the network is out of order"},
      {"+CMS ERROR: 42", "the network is congested"},
      {"+CMS ERROR: 69", "the subscription does not permit it"},
      {"+CMS ERROR: 310", "no SIM"},
      {"+CMS ERROR: 330", "the SIM holds no number of a service centre"},
      {"+CMS ERROR: 331", "no network"},
      {"+CMS ERROR: 332", "the network does not answer"}};
  for (const auto& [line, reason] : reasons)
    if (error == line) return std::string(reason) + " (" + error + ")";
  return error;
}
}  // namespace

PortModem::PortModem(const Config& config, State& state, const Deadline& deadline)
    : pin_(config.pin), state_(state), port_(config.port, deadline) {
  port_.ask("AT+CMEE=1");
}

// Returns the SIM's state, such as "READY" or "SIM PIN"; an empty text if there is no SIM.
std::string PortModem::simState() {
  for (unsigned tries = 0;; ++tries) {
    const AtPort::Answer answer = port_.ask("AT+CPIN?");
    const bool busy = answer.error == "+CME ERROR: 14";  // the SIM is not ready to answer yet
    if (!busy || tries == 20) return answer.value("+CPIN:");
    std::this_thread::sleep_for(std::chrono::milliseconds(250));
  }
}

void PortModem::givePin() {
  if (pin_.empty()) throw Problem("the SIM requires its PIN, and the settings have none");
  if (state_.triedPin == pin_)
    throw Problem("the SIM has refused the PIN of the settings; the PIN is not tried again");
  state_.triedPin = pin_;
  state_.save();
  if (!port_.ask("AT+CPIN=\"" + pin_ + "\"").error.empty())
    throw Problem("the SIM refuses the PIN of the settings; the PIN is not tried again");
  state_.triedPin.clear();
  state_.save();
}

void PortModem::prepare() {
  std::string sim = simState();
  if (sim == "SIM PIN") {
    givePin();
    sim = simState();
  }
  if (sim.empty()) throw Problem(noSim);
  if (sim != "READY") throw Problem(locked + sim);
  port_.demand("AT+CMGF=0");
}

std::vector<std::string> PortModem::memoryNames() {
  const std::string offered = port_.ask("AT+CPMS=?").value("+CPMS:");
  const std::string forListing = offered.substr(0, offered.find(')'));
  std::vector<std::string> names;
  for (const char* const name : {"SM", "ME"})
    if (forListing.find("\"" + std::string(name) + "\"") != std::string::npos) names.emplace_back(name);
  if (names.empty()) throw Problem("the modem has no memory for messages");
  return names;
}

PortModem::Memory PortModem::select(const std::string& memory) {
  const std::string counts = port_.demand("AT+CPMS=\"" + memory + "\"").value("+CPMS:");
  selected_ = memory;
  return {memory, numberOf(item(counts, 0)), numberOf(item(counts, 1))};
}

// Returns the received messages of the selected memory. The modem gives each message a state: 0 is unread, 1
// is read, 2 is a draft, 3 is sent.
std::vector<Stored> PortModem::stored(const std::string& memory, bool unreadToo) {
  const AtPort::Answer answer = port_.demand(unreadToo ? "AT+CMGL=4" : "AT+CMGL=1");
  std::vector<Stored> found;
  for (std::size_t i = 0; i + 1 < answer.lines.size(); ++i) {
    if (answer.lines[i].compare(0, 6, "+CMGL:") != 0) continue;
    const std::string values = answer.lines[i].substr(6);
    const unsigned kind = numberOf(item(values, 1));
    if (kind < 2) found.push_back({memory + "/" + item(values, 0), kind == 1, answer.lines[i + 1]});
  }
  return found;
}

std::vector<Message> PortModem::list(bool unreadToo) {
  std::vector<Stored> all;
  bool full = false;
  for (const std::string& name : memoryNames()) {
    const Memory memory = select(name);
    full = full || (memory.total > 0 && memory.used >= memory.total);
    for (Stored& each : stored(name, unreadToo)) all.push_back(std::move(each));
  }
  std::vector<Message> messages = assemble(all, std::time(nullptr));
  full_ = full && messages.empty();  // the caller deletes listed messages soon, which makes room
  return messages;
}

// Deletes a part. Deletes nothing if the checksum shows that another message is now in its place.
void PortModem::removePart(const std::string& part) {
  const std::string place = part.substr(0, part.find(','));
  const std::string memory = place.substr(0, place.find('/'));
  const std::string index = place.substr(memory.size() + 1);
  if (selected_ != memory) select(memory);
  const AtPort::Answer held = port_.ask("AT+CMGR=" + index);
  if (held.lines.size() < 2 || partId({place, true, held.lines[1]}) != part) return;
  port_.demand("AT+CMGD=" + index);
}

void PortModem::remove(const std::string& id) {
  for (const std::string& part : partsOf(id)) removePart(part);
}

void PortModem::send(const std::string& number, const std::string& text) {
  const std::vector<Submit> parts = makeSubmits(number, text, std::random_device()());
  if (parts.empty()) throw Problem("the text needs more than 255 parts");
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const AtPort::Answer answer = port_.ask("AT+CMGS=" + std::to_string(parts[i].length), parts[i].hex);
    if (!answer.error.empty())
      throw Problem("part " + std::to_string(i + 1) + " of " + std::to_string(parts.size()) +
                    " was not sent: " + reasonOf(answer.error));
  }
}

// A modem reports one registration for 4G, one for 2G and 3G, and one for packet service. Returns the best.
std::string PortModem::registration() {
  std::string first;
  for (const char* const command : {"+CEREG", "+CREG", "+CGREG"}) {
    const AtPort::Answer answer = port_.ask(std::string("AT") + command + "?");
    const std::string value = answer.value(std::string(command) + ":");
    if (value.empty()) continue;
    const std::string name = registrationName(numberOf(item(value, 1)));
    if (isRegistered(name)) return name;
    if (first.empty() || first == "idle" || first == "unknown") first = name;
  }
  return first.empty() ? "unknown" : first;
}

std::string PortModem::warning() {
  if (full_) return "the memory for messages is full of messages that the tool does not delete";
  const std::string state = registration();
  return isRegistered(state) ? "" : "not registered with a network: " + state;
}

Status PortModem::status() {
  Status status;
  const auto firstLine = [this](const char* command) {
    const AtPort::Answer answer = port_.ask(command);
    return answer.lines.empty() ? "" : answer.lines[0];
  };
  status.modem = firstLine("AT+CGMI") + " " + firstLine("AT+CGMM");
  const std::string sim = simState();
  if (sim == "READY") {
    status.sim = "ready";
  } else if (sim.empty()) {
    status.sim = "missing";
    status.problem = noSim;
  } else {
    status.sim = "locked: " + sim;
    status.problem = locked + sim;
  }
  status.registration = registration();
  port_.ask("AT+COPS=3,0");
  status.networkOperator = item(port_.ask("AT+COPS?").value("+COPS:"), 2);
  const unsigned quality = numberOf(item(port_.ask("AT+CSQ").value("+CSQ:"), 0));
  if (quality <= 31) status.signal = quality * 100 / 31;
  if (status.problem.empty()) addMemories(status);
  return status;
}

void PortModem::addMemories(Status& status) {
  unsigned room = 0;
  unsigned used = 0;
  for (const std::string& name : memoryNames()) {
    const Memory memory = select(name);
    used += memory.used;
    room += memory.total - std::min(memory.used, memory.total);
  }
  status.stored = used;
  status.room = room;
  status.problem = room == 0 ? "the memory for messages is full" : warning();
}
}  // namespace Standalone
