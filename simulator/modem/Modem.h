#pragma once

#include <json/value.h>

#include <string>
#include <vector>

namespace Simulator {
/// A fault of the modem's tool. Fail: the tool reports an error. Hang: the tool waits until a repair. Kill:
/// SIGKILL ends the tool. Silent: the tool does nothing and exits with status 0.
enum class ToolFault { None, Fail, Hang, Kill, Silent };

/// The modem: its messages, the numbers that it refuses, and the faults of its tool. Each operation runs the
/// tool as a new process, so a folder holds all data. The folder is writable even if /var is full.
class Modem {
 public:
  static constexpr char storeFolder[] = "/run/modem";
  /// The names of the faults, in the order of ToolFault.
  static constexpr const char* faultNames[] = {"none", "fail", "hang", "kill", "silent"};

  explicit Modem(std::string folder);

  /// Receives a message. `userData` is the text that the tool prints between the quotes.
  void receive(const std::string& sender, const std::string& userData);
  /// Adds a text to the unread messages. The tool prints the text unchanged.
  void receiveRaw(const std::string& listing);

  /// Returns the "unread" or the "read" messages as the tool prints them, in the order of arrival.
  std::vector<std::string> printed(const std::string& state) const;

  void markRead();  ///< makes all unread messages read
  /// Deletes the read messages. Returns false on failure.
  bool deleteRead();
  /// Sends a message. Returns false if the modem refuses the number, or on failure.
  bool send(const std::string& recipient, const std::string& text);
  /// Returns the sent messages in order, each with "recipient" and "text".
  std::vector<Json::Value> sent() const;

  void setRefused(const std::string& number, bool refused);
  std::vector<std::string> refused() const;  ///< the numbers to which the modem refuses to send

  /// Sets the fault of the next `times` runs of `operation`: "unread", "read", "delete" or "send".
  void setFault(const std::string& operation, ToolFault fault, unsigned times);
  void clearFaults();
  /// Each run of the tool calls this once. Returns the fault of the run. A Hang lasts until clearFaults().
  ToolFault takeFault(const std::string& operation);
  /// Returns the faults that are set, one line each, such as "send: fail, 2 times".
  std::vector<std::string> faults() const;

  /// The tool passes `operation` when it begins to hang, and an empty string when it continues.
  void setHanging(const std::string& operation) { write("hanging", operation); }
  bool hangs(const std::string& operation) const;  ///< returns true if a Hang is set for `operation`
  /// Returns the operation in which the tool hangs; an empty string if the tool does not hang.
  std::string hangingOperation() const;
  unsigned hangingSeconds() const;  ///< how long the tool has been hanging

 private:
  std::string path(const std::string& name) const { return folder_ + "/" + name; }
  Json::Value state() const;
  void write(const std::string& name, const std::string& content);

  std::string folder_;
};
}  // namespace Simulator
