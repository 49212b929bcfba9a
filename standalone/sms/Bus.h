#pragma once

#include <systemd/sd-bus.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "standalone/sms/Deadline.h"
#include "standalone/sms/Modem.h"

namespace Standalone {
/// The properties of a D-Bus object, but only texts, octets and numbers.
struct Properties {
  std::map<std::string, std::string> texts;
  std::map<std::string, std::int64_t> numbers;

  std::string text(const std::string& name) const;
  std::int64_t number(const std::string& name) const;  ///< 0 if the object lacks the property
};

/// Thrown if the object of a call no longer exists.
class Gone : public Problem {
 public:
  using Problem::Problem;
};

/// ModemManager on the system bus. Each function throws a Problem if it fails or the deadline passes. While a
/// message arrives, ModemManager may ask a client to repeat a call. This class repeats it until the deadline.
class Bus {
 public:
  explicit Bus(const Deadline& deadline);

  using Reply = std::unique_ptr<sd_bus_message, decltype(&sd_bus_message_unref)>;

  /// Calls a method of ModemManager. `arguments` is a function that appends the arguments to the call.
  template <typename Append>
  Reply call(const std::string& path, const char* interface, const char* method, Append arguments);
  Reply call(const std::string& path, const char* interface, const char* method);

  /// Returns the properties of one interface of an object.
  Properties properties(const std::string& path, const char* interface);

  /// Returns the properties of all objects of ModemManager, by path and interface.
  std::map<std::string, std::map<std::string, Properties>> objects();

  /// Returns the id of the bus and the unique name of the running ModemManager.
  std::string owner();

 private:
  Reply begin(const std::string& path, const char* interface, const char* method);
  Reply finish(sd_bus_message* request, bool& again);

  const Deadline& deadline_;
  std::unique_ptr<sd_bus, decltype(&sd_bus_flush_close_unref)> bus_;
};

/// Throws a Problem if `result`, the return value of an sd-bus function, is negative.
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
