#include "standalone/sms/Bus.h"

#include <cstring>
#include <thread>

namespace Standalone {
namespace {
constexpr char manager[] = "org.freedesktop.ModemManager1";
constexpr char managerPath[] = "/org/freedesktop/ModemManager1";
constexpr char tryAgain[] = "org.freedesktop.ModemManager1.Error.Core.Retry";
constexpr char notFound[] = "org.freedesktop.ModemManager1.Error.Core.NotFound";
constexpr std::chrono::milliseconds beforeRetry(100);

struct Error {
  sd_bus_error of{};
  ~Error() { sd_bus_error_free(&of); }
  bool is(const char* name) const { return sd_bus_error_has_name(&of, name) != 0; }
};

bool isAbsent(const Error& error) {
  for (const char* const name :
       {SD_BUS_ERROR_SERVICE_UNKNOWN, SD_BUS_ERROR_NAME_HAS_NO_OWNER, SD_BUS_ERROR_NO_REPLY,
        SD_BUS_ERROR_DISCONNECTED, "org.freedesktop.DBus.Error.Spawn.ChildExited",
        "org.freedesktop.systemd1.NoSuchUnit"})
    if (error.is(name)) return true;
  return false;
}

[[noreturn]] void fail(const Error& error, int result, bool inTime) {
  const std::string message = error.of.message != nullptr ? error.of.message : std::strerror(-result);
  if (!inTime) throw Problem("ModemManager does not answer in time");
  if (error.is(SD_BUS_ERROR_UNKNOWN_OBJECT) || error.is(SD_BUS_ERROR_UNKNOWN_METHOD) ||
      error.is(SD_BUS_ERROR_UNKNOWN_INTERFACE) || error.is(notFound))
    throw Gone(message);
  if (isAbsent(error)) throw Problem("ModemManager is not running");
  if (error.is(SD_BUS_ERROR_ACCESS_DENIED)) throw Problem("this user may not use ModemManager: " + message);
  throw Problem(message);
}

std::string octetsIn(sd_bus_message* message) {
  const void* octets = nullptr;
  std::size_t size = 0;
  mustWork(sd_bus_message_read_array(message, 'y', &octets, &size));
  return {static_cast<const char*>(octets), size};
}

// Reads a variant, which is the value of the property `name`. Skips types that Properties does not contain.
void readValue(sd_bus_message* message, const std::string& name, Properties& properties) {
  const char* type = nullptr;
  mustWork(sd_bus_message_peek_type(message, nullptr, &type));
  const std::string kind = type;
  if (kind != "s" && kind != "o" && kind != "u" && kind != "i" && kind != "ay") {
    mustWork(sd_bus_message_skip(message, "v"));
    return;
  }
  mustWork(sd_bus_message_enter_container(message, 'v', kind.c_str()));
  if (kind == "ay") {
    properties.texts[name] = octetsIn(message);
  } else if (kind == "u" || kind == "i") {
    std::uint32_t number = 0;
    mustWork(sd_bus_message_read_basic(message, kind[0], &number));
    properties.numbers[name] = kind == "i" ? static_cast<std::int32_t>(number) : std::int64_t{number};
  } else {
    const char* text = nullptr;
    mustWork(sd_bus_message_read_basic(message, kind[0], static_cast<void*>(&text)));
    properties.texts[name] = text;
  }
  mustWork(sd_bus_message_exit_container(message));
}

// Reads a dictionary. Calls `readEntry` with each key; `readEntry` must read the value.
template <typename ReadEntry>
void readDictionary(sd_bus_message* message, char key, const char* value, ReadEntry readEntry) {
  const std::string entry = std::string(1, key) + value;
  mustWork(sd_bus_message_enter_container(message, 'a', ("{" + entry + "}").c_str()));
  int more = 0;
  while ((more = sd_bus_message_enter_container(message, 'e', entry.c_str())) > 0) {
    const char* name = nullptr;
    mustWork(sd_bus_message_read_basic(message, key, static_cast<void*>(&name)));
    readEntry(std::string(name));
    mustWork(sd_bus_message_exit_container(message));
  }
  mustWork(more);
  mustWork(sd_bus_message_exit_container(message));
}

Properties readProperties(sd_bus_message* message) {
  Properties properties;
  readDictionary(message, 's', "v", [&](const std::string& name) { readValue(message, name, properties); });
  return properties;
}
}  // namespace

void mustWork(int result) {
  if (result < 0) throw Problem(std::string("D-Bus: ") + std::strerror(-result));
}

std::string Properties::text(const std::string& name) const {
  const auto found = texts.find(name);
  return found != texts.end() ? found->second : "";
}

std::int64_t Properties::number(const std::string& name) const {
  const auto found = numbers.find(name);
  return found != numbers.end() ? found->second : 0;
}

Bus::Bus(const Deadline& deadline) : deadline_(deadline), bus_(nullptr, sd_bus_flush_close_unref) {
  sd_bus* bus = nullptr;
  const int result = sd_bus_open_system(&bus);
  if (result < 0) throw Problem(std::string("cannot reach the system bus: ") + std::strerror(-result));
  bus_.reset(bus);
}

Bus::Reply Bus::begin(const std::string& path, const char* interface, const char* method) {
  sd_bus_message* request = nullptr;
  mustWork(sd_bus_message_new_method_call(bus_.get(), &request, manager, path.c_str(), interface, method));
  return {request, sd_bus_message_unref};
}

// Sends the request. Waits briefly and sets `again` if ModemManager asks to repeat the call.
Bus::Reply Bus::finish(sd_bus_message* request, bool& again) {
  Error error;
  sd_bus_message* reply = nullptr;
  const auto microseconds =
      std::chrono::microseconds(deadline_.left() + std::chrono::milliseconds(1)).count();
  const int result =
      sd_bus_call(bus_.get(), request, static_cast<std::uint64_t>(microseconds), &error.of, &reply);
  again = result < 0 && error.is(tryAgain) && !deadline_.hasPassed();
  if (again)
    std::this_thread::sleep_for(beforeRetry);
  else if (result < 0)
    fail(error, result, !deadline_.hasPassed());
  return {reply, sd_bus_message_unref};
}

Bus::Reply Bus::call(const std::string& path, const char* interface, const char* method) {
  return call(path, interface, method, [](sd_bus_message*) {});
}

Properties Bus::properties(const std::string& path, const char* interface) {
  const Reply reply = call(path, "org.freedesktop.DBus.Properties", "GetAll", [&](sd_bus_message* request) {
    mustWork(sd_bus_message_append(request, "s", interface));
  });
  return readProperties(reply.get());
}

std::map<std::string, std::map<std::string, Properties>> Bus::objects() {
  const Reply reply = call(managerPath, "org.freedesktop.DBus.ObjectManager", "GetManagedObjects");
  std::map<std::string, std::map<std::string, Properties>> objects;
  readDictionary(reply.get(), 'o', "a{sa{sv}}", [&](const std::string& path) {
    readDictionary(reply.get(), 's', "a{sv}", [&](const std::string& interface) {
      objects[path][interface] = readProperties(reply.get());
    });
  });
  return objects;
}

std::string Bus::owner() {
  sd_bus_creds* credentials = nullptr;
  const int result = sd_bus_get_name_creds(bus_.get(), manager, SD_BUS_CREDS_UNIQUE_NAME, &credentials);
  if (result < 0) throw Problem("ModemManager is not running");
  const std::unique_ptr<sd_bus_creds, decltype(&sd_bus_creds_unref)> owned(credentials, sd_bus_creds_unref);
  const char* name = nullptr;
  mustWork(sd_bus_creds_get_unique_name(credentials, &name));
  sd_id128_t id{};
  mustWork(sd_bus_get_bus_id(bus_.get(), &id));
  char text[SD_ID128_STRING_MAX];
  return std::string(sd_id128_to_string(id, text)) + "/" + name;
}
}  // namespace Standalone
