#pragma once

#include <systemd/sd-bus.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "standalone/sms/Deadline.h"
#include "standalone/sms/Modem.h"

namespace Standalone {

/// The properties of a D-Bus object of type text, octets or number, without the others.
struct Properties {
  std::map<std::string, std::string> texts;
  std::map<std::string, std::int64_t> numbers;

  std::string text(const std::string& name) const;
  std::int64_t number(const std::string& name) const;  ///< 0 when absent
};

/// Thrown for a path whose object no longer exists.
class Gone : public Problem {
 public:
  using Problem::Problem;
};

/// ModemManager on the system bus. Calls throw a Problem when they fail or the deadline passes. A call that
/// ModemManager asks to repeat, as it does while a message arrives, is repeated until the deadline.
class Bus {
 public:
  explicit Bus(const Deadline& deadline);

  using Reply = std::unique_ptr<sd_bus_message, decltype(&sd_bus_message_unref)>;

  /// Calls a method of ModemManager; `arguments` appends them.
  template <typename Append>
  Reply call(const std::string& path, const char* interface, const char* method, Append arguments);
  Reply call(const std::string& path, const char* interface, const char* method);

  /// The properties of an object in one interface.
  Properties properties(const std::string& path, const char* interface);

  /// All objects of ModemManager: the properties by path and interface.
  std::map<std::string, std::map<std::string, Properties>> objects();

  /// The unique name of the running ModemManager, and its bus.
  std::string owner();

 private:
  Reply begin(const std::string& path, const char* interface, const char* method);
  Reply finish(sd_bus_message* request, bool& again);

  const Deadline& deadline_;
  std::unique_ptr<sd_bus, decltype(&sd_bus_flush_close_unref)> bus_;
};

/// Throws a Problem when an sd-bus call has failed.
void mustWork(int result);

template <typename Append>
Bus::Reply Bus::call(const std::string& path, const char* interface, const char* method, Append arguments) {
  while (true) {
    const Reply request = begin(path, interface, method);
    arguments(request.get());
    bool again = false;
    Reply reply = finish(request.get(), again);
    if (!again) return reply;
  }
}

}  // namespace Standalone
