#include "standalone/sms/ManagerModem.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <thread>
#include <tuple>

#include "standalone/sms/Assembly.h"

namespace Standalone {
namespace {
constexpr char modemInterface[] = "org.freedesktop.ModemManager1.Modem";
constexpr char networkInterface[] = "org.freedesktop.ModemManager1.Modem.Modem3gpp";
constexpr char messagingInterface[] = "org.freedesktop.ModemManager1.Modem.Messaging";
constexpr char smsInterface[] = "org.freedesktop.ModemManager1.Sms";
constexpr char simInterface[] = "org.freedesktop.ModemManager1.Sim";

constexpr std::int64_t partsTimeout = 72 * 3600;  // seconds within which all parts of a message must arrive
constexpr std::int64_t betweenFetches = 10;       // minimum seconds between two fetches
constexpr std::int64_t minute = 60;
constexpr std::int64_t timeToRegister = 30;  // seconds that a modem has to register after it was enabled
constexpr std::int64_t hour = 3600;
constexpr std::chrono::milliseconds betweenPolls(100);

// MMModemState
enum ModemState {
  Failed = -1,
  Initializing = 1,
  Locked = 2,
  Disabled = 3,
  Disabling = 4,
  Enabling = 5,
  Enabled = 6,
  Registered = 8,
  Disconnecting = 9
};
// MMModemLock
enum Lock { SimPin = 2 };
// MMSmsState
enum SmsState { Receiving = 2, Received = 3 };
// MMSmsPduType
enum PduType { SubmitPdu = 2 };

std::string registrationName(std::int64_t code) {  // MMModem3gppRegistrationState
  constexpr const char* names[] = {"idle", "home", "searching", "denied", "unknown", "roaming"};
  if (code == 6 || code == 9) return "home";
  if (code == 7 || code == 10) return "roaming";
  return code >= 0 && code < 6 ? names[code] : "unknown";
}

std::string failure(std::int64_t reason) {  // MMModemStateFailedReason
  if (reason == 2) return "no SIM";
  return reason == 3 ? "the SIM does not work" : "ModemManager cannot use the modem";
}

std::string simState(const Properties& modem) {
  if (modem.text("Sim").size() < 2) return "missing";  // the path is "/" if there is no SIM
  return modem.number("State") == Locked ? "locked" : "ready";
}

// Converts a time such as "2026-11-25T15:39:11+01:00" to seconds since 1970. The zone can also be "+01" or
// "Z". Returns the present time for any other text.
std::int64_t secondsOf(const std::string& stamp) {
  std::tm parts{};
  const char* const zone = strptime(stamp.c_str(), "%Y-%m-%dT%H:%M:%S", &parts);
  if (zone == nullptr) return std::time(nullptr);
  int hours = 0;
  int minutes = 0;
  if (std::sscanf(zone, "%3d:%2d", &hours, &minutes) < 1) hours = 0;
  if (zone[0] == '-') minutes = -minutes;
  return timegm(&parts) - hours * hour - minutes * minute;
}
}  // namespace

ManagerModem::ManagerModem(const Config& config, State& state, const Deadline& deadline)
    : pin_(config.pin), state_(state), deadline_(deadline), bus_(deadline) {
  find();
}

void ManagerModem::find() {
  for (auto& [path, interfaces] : bus_.objects()) {
    const auto modem = interfaces.find(modemInterface);
    if (modem == interfaces.end()) continue;
    path_ = path;
    modem_ = modem->second;
    network_ = interfaces[networkInterface];
    return;
  }
  throw Problem("no modem");
}

// Waits until the modem is no longer being initialized, enabled or disabled.
void ManagerModem::awaitStableState() {
  const auto isBusy = [this] {
    const std::int64_t state = modem_.number("State");
    return state == 0 || state == Initializing || state == Disabling || state == Enabling;
  };
  while (isBusy()) {
    if (deadline_.hasPassed()) throw Problem("the modem does not become ready");
    std::this_thread::sleep_for(deadline_.left(betweenPolls));
    find();
  }
}

void ManagerModem::enable(bool on) {
  bus_.call(path_, modemInterface, "Enable",
            [on](sd_bus_message* request) { mustWork(sd_bus_message_append(request, "b", on ? 1 : 0)); });
  find();
}

void ManagerModem::givePin() {
  if (modem_.number("UnlockRequired") != SimPin)
    throw Problem("the SIM is locked by something other than its PIN");
  if (pin_.empty()) throw Problem("the SIM requires its PIN, and the settings have none");
  if (state_.triedPin == pin_)
    throw Problem("the SIM has refused the PIN of the settings; the PIN is not tried again");
  state_.triedPin = pin_;
  state_.save();
  bus_.call(modem_.text("Sim"), simInterface, "SendPin",
            [this](sd_bus_message* request) { mustWork(sd_bus_message_append(request, "s", pin_.c_str())); });
  state_.triedPin.clear();
  state_.save();
  while (modem_.number("State") == Locked && !deadline_.hasPassed()) {
    std::this_thread::sleep_for(deadline_.left(betweenPolls));
    find();
  }
}

void ManagerModem::prepare() {
  awaitStableState();
  if (modem_.number("State") == Locked) {
    givePin();
    awaitStableState();
  }
  if (modem_.number("State") == Failed) throw Problem(failure(modem_.number("StateFailedReason")));
  if (modem_.number("State") != Disabled) return;
  enable(true);
  state_.lastFetch = upTime();  // ModemManager fetches all messages when it enables the modem
}

std::vector<std::string> ManagerModem::paths() {
  const Bus::Reply reply = bus_.call(path_, messagingInterface, "List");
  std::vector<std::string> paths;
  mustWork(sd_bus_message_enter_container(reply.get(), 'a', "o"));
  const char* path = nullptr;
  int more = 0;
  while ((more = sd_bus_message_read_basic(reply.get(), 'o', static_cast<void*>(&path))) > 0)
    paths.emplace_back(path);
  mustWork(more);
  // Sorts by arrival: the path of a later message ends with a greater number.
  std::sort(paths.begin(), paths.end(), [](const std::string& a, const std::string& b) {
    return std::make_tuple(a.size(), a) < std::make_tuple(b.size(), b);
  });
  return paths;
}

// Returns true if the message is complete, or has been incomplete for too long. Updates waitsForParts_.
bool ManagerModem::isListed(const Properties& sms) {
  if (sms.number("PduType") == SubmitPdu) return false;
  if (sms.number("State") == Received) return true;
  if (sms.number("State") != Receiving) return false;
  const std::int64_t age = std::time(nullptr) - secondsOf(sms.text("Timestamp"));
  waitsForParts_ = waitsForParts_ || age < hour;
  return age > partsTimeout;
}

std::vector<Message> ManagerModem::list(bool /*unreadToo*/) {
  std::vector<Message> messages;
  for (const std::string& path : paths()) {
    Properties sms;
    try {
      sms = bus_.properties(path, smsInterface);
    } catch (const Gone&) {
      continue;
    }
    if (!isListed(sms)) continue;
    Message message{path, false, sms.text("SMSC"), sms.text("Number"), sms.text("Text")};
    if (sms.number("State") == Receiving)
      message.text = "Incomplete message: ModemManager does not show its parts";
    else if (!sms.text("Data").empty() && message.text.empty())
      message.text = dataLine(sms.text("Data"));
    messages.push_back(message);
  }
  return messages;
}

void ManagerModem::remove(const std::string& id) {
  try {
    bus_.call(path_, messagingInterface, "Delete",
              [&id](sd_bus_message* request) { mustWork(sd_bus_message_append(request, "o", id.c_str())); });
  } catch (const Gone&) {
    return;  // another program has deleted the message
  }
}

void ManagerModem::send(const std::string& number, const std::string& text) {
  const Bus::Reply created = bus_.call(path_, messagingInterface, "Create", [&](sd_bus_message* request) {
    mustWork(
        sd_bus_message_append(request, "a{sv}", 2, "number", "s", number.c_str(), "text", "s", text.c_str()));
  });
  const char* path = nullptr;
  mustWork(sd_bus_message_read_basic(created.get(), 'o', static_cast<void*>(&path)));
  try {
    bus_.call(path, smsInterface, "Send");
  } catch (const Problem&) {
    remove(path);
    throw;
  }
  remove(path);
}

std::string ManagerModem::warning() {
  find();
  const std::string registration = registrationName(network_.number("RegistrationState"));
  if (registration == "home" || registration == "roaming") return "";
  std::string warning = "not registered with a network: " + registration;
  const bool isSearching = registration == "unknown" || registration == "searching";
  const bool isEarly = upTime() - state_.lastFetch < timeToRegister && state_.problem != warning;
  return isSearching && isEarly ? "" : warning;
}

Status ManagerModem::status() {
  Status status;
  const std::int64_t state = modem_.number("State");
  status.modem = modem_.text("Manufacturer") + " " + modem_.text("Model");
  status.sim = simState(modem_);
  status.registration = registrationName(network_.number("RegistrationState"));
  status.networkOperator = network_.text("OperatorName");
  const Bus::Reply signal =
      bus_.call(path_, "org.freedesktop.DBus.Properties", "Get", [](sd_bus_message* request) {
        mustWork(sd_bus_message_append(request, "ss", modemInterface, "SignalQuality"));
      });
  std::uint32_t percent = 0;
  int recent = 0;
  mustWork(sd_bus_message_read(signal.get(), "v", "(ub)", &percent, &recent));
  status.signal = percent;
  if (state == Failed)
    status.problem = failure(modem_.number("StateFailedReason"));
  else if (state == Locked)
    status.problem = "the SIM is locked";
  else if (state < Enabled)
    status.problem = "the modem is not enabled";
  else
    status.problem = warning();
  if (state >= Enabled) status.stored = static_cast<unsigned>(paths().size());
  return status;
}

// Returns true if it is time to fetch all messages. A fetch changes the ids of messages, which invalidates
// their marks. While a message has a mark, the tool therefore waits up to an hour.
bool ManagerModem::isFetchDue(bool arrived) const {
  const std::int64_t passed = upTime() - state_.lastFetch;
  if (passed >= hour) return true;
  if (arrived || !state_.marks.empty()) return false;
  return (state_.hasArrivals && passed >= betweenFetches) || (waitsForParts_ && passed >= minute);
}

void ManagerModem::fetchMissed(bool arrived) {
  if (state_.lastFetch == 0) state_.lastFetch = upTime();
  state_.hasArrivals = state_.hasArrivals || arrived;
  const std::string port = modem_.text("PrimaryPort");
  const bool hasAtCommands = port.compare(0, 7, "cdc-wdm") != 0 && port.compare(0, 4, "wwan") != 0;
  if (hasAtCommands && isFetchDue(arrived) && modem_.number("State") < Disconnecting) {
    enable(false);
    enable(true);
    state_.lastFetch = upTime();
    state_.hasArrivals = false;
  }
  state_.save();
}
}  // namespace Standalone
