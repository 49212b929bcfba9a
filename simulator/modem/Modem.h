#pragma once

#include <json/value.h>

#include <string>
#include <vector>

namespace Simulator {

/// A fault of the modem's tool.
enum class ToolFault { None, Fail, Hang, Kill, Silent };

/// The modem: the messages that it received and sent, the numbers that it refuses, and the faults of its
/// tool. The tool is a new process for each operation, so all of this is kept in a folder. The folder is on a
/// file system of its own, which stays writable when a disk of the gateway is full.
class Modem {
 public:
  static constexpr char storeFolder[] = "/run/modem";
  /// The names of ToolFault, in its order.
  static constexpr const char* faultNames[] = {"none", "fail", "hang", "kill", "silent"};

  /// Creates the folders that are missing.
  explicit Modem(std::string folder);

  /// Receives a message; `userData` as the tool prints it, without quotes.
  void receive(const std::string& sender, const std::string& userData);
  /// Adds a text to the listing unchanged.
  void receiveRaw(const std::string& listing);

  /// The messages of a box, "unread" or "read", as the tool prints them, in the order of their arrival.
  std::vector<std::string> printed(const std::string& box) const;
  /// Marks the unread messages as read.
  void markRead();
  /// Deletes the read messages; false when that fails.
  bool deleteRead();
  /// Sends a message; false for a number that the modem refuses.
  bool send(const std::string& recipient, const std::string& text);
  /// The sent messages in order, each with "recipient" and "text".
  std::vector<Json::Value> sent() const;

  void setRefused(const std::string& number, bool refused);
  std::vector<std::string> refused() const;

  /// Sets the fault of `operation` ("unread", "read", "delete", "send") for the next `times` runs; 0 ends it.
  void setFault(const std::string& operation, ToolFault fault, unsigned times);
  void clearFaults();
  /// The fault of this run of `operation`, and counts it. Hang is not counted; it lasts until it is cleared.
  ToolFault takeFault(const std::string& operation);
  /// The faults that are set, one line each: "send: fail, 2 times".
  std::vector<std::string> faults() const;

  /// Called by the tool when it begins to hang in `operation`, and with an empty string when it goes on.
  void setHanging(const std::string& operation) { write("hanging", operation); }
  /// Whether Hang is set for `operation`.
  bool hangs(const std::string& operation) const;
  /// What a tool hangs in, empty if in nothing, and for how long.
  std::string hangingOperation() const;
  unsigned hangingSeconds() const;

 private:
  std::string path(const std::string& name) const { return folder_ + "/" + name; }
  Json::Value state() const;
  void write(const std::string& name, const std::string& content);

  std::string folder_;
};

}  // namespace Simulator
