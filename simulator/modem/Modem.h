#pragma once

#include <json/value.h>

#include <string>
#include <vector>

namespace Simulator {

/// What the modem's tool is to do instead of its work.
enum class ToolFault { None, Fail, Hang, Kill, Silent };

/// The modem: messages that came in, messages that were sent, numbers that it refuses, and what is to go
/// wrong in its tool. All of it lies in a folder, because the tool is run anew for each operation. It is a
/// device of its own: a disk of the gateway that is full does not reach it.
class Modem {
 public:
  static constexpr char storeFolder[] = "/run/modem";
  /// Of ToolFault, in its order.
  static constexpr const char* faultNames[] = {"none", "fail", "hang", "kill", "silent"};

  /// Creates the folder tree if it is missing.
  explicit Modem(std::string folder);

  /// Takes in a message: `userData` as the tool prints it, without quotes.
  void receive(const std::string& sender, const std::string& userData);
  /// Takes in a piece of listing as it is, whatever it holds.
  void receiveRaw(const std::string& listing);

  /// The messages of a box, "unread" or "read", as the tool prints them, in the order in which they came in.
  std::vector<std::string> printed(const std::string& box) const;
  /// Those that were unread are read.
  void markRead();
  /// Deletes what is read; false when that fails.
  bool deleteRead();
  /// Sends; false for a number that the modem refuses.
  bool send(const std::string& recipient, const std::string& text);
  /// The sent messages in their order: {"recipient", "text"}.
  std::vector<Json::Value> sent() const;

  void setRefused(const std::string& number, bool refused);
  std::vector<std::string> refused() const;

  /// Sets what goes wrong in `operation` ("unread", "read", "delete", "send") the next `times` times; 0 puts
  /// it right.
  void setFault(const std::string& operation, ToolFault fault, unsigned times);
  void clearFaults();
  /// What goes wrong now; counts it as having happened. A tool that hangs does so until it is put right.
  ToolFault takeFault(const std::string& operation);
  /// What is set, a line each: "send: fail, 2 times".
  std::vector<std::string> faults() const;

  /// A tool marks that it hangs; it ends when its fault is put right.
  void setHanging(const std::string& operation) { write("hanging", operation); }
  /// Whether it is not yet put right.
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
