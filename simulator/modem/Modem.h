#pragma once

#include <json/value.h>

#include <string>
#include <vector>

namespace Simulator {

/// A fault of the modem's tool.
enum class ToolFault { None, Fail, Hang, Kill, Silent };

/// The modem: its messages, the numbers that it refuses, and the faults of its tool. The tool is a new
/// process for each operation, so a folder holds all data. Its file system stays writable when others are
/// full.
class Modem {
 public:
  static constexpr char storeFolder[] = "/run/modem";
  /// The names of ToolFault, in its order.
  static constexpr const char* faultNames[] = {"none", "fail", "hang", "kill", "silent"};

  explicit Modem(std::string folder);

  /// Receives a message. `userData` is what the tool prints, without quotes.
  void receive(const std::string& sender, const std::string& userData);
  /// Adds a text to the listing unchanged.
  void receiveRaw(const std::string& listing);

  /// Returns the messages of a box, "unread" or "read", as the tool prints them, in the order of arrival.
  std::vector<std::string> printed(const std::string& box) const;

  void markRead();
  /// Deletes the read messages; false on failure.
  bool deleteRead();
  /// Sends a message; false if the modem refuses the number.
  bool send(const std::string& recipient, const std::string& text);
  /// Returns the sent messages in order, each with "recipient" and "text".
  std::vector<Json::Value> sent() const;

  void setRefused(const std::string& number, bool refused);
  std::vector<std::string> refused() const;

  /// Sets the fault of `operation` ("unread", "read", "delete", "send") for the next `times` runs; 0 ends it.
  void setFault(const std::string& operation, ToolFault fault, unsigned times);
  void clearFaults();
  /// Returns the fault of this run of `operation` and counts the run. A Hang lasts until it is cleared.
  ToolFault takeFault(const std::string& operation);
  /// Returns the faults that are set, one line each, such as "send: fail, 2 times".
  std::vector<std::string> faults() const;

  /// The tool calls this when it begins to hang in `operation`, and with an empty string when it continues.
  void setHanging(const std::string& operation) { write("hanging", operation); }
  bool hangs(const std::string& operation) const;  ///< Hang is set for `operation`
  /// Returns the operation in which the tool hangs; empty if it does not hang.
  std::string hangingOperation() const;

  unsigned hangingSeconds() const;

 private:
  std::string path(const std::string& name) const { return folder_ + "/" + name; }
  Json::Value state() const;
  void write(const std::string& name, const std::string& content);

  std::string folder_;
};

}  // namespace Simulator
