#pragma once

#include <map>
#include <string>

#include "simulator/console/Interpreter.h"

namespace Simulator {

/// The data that the page shows of a gateway, by name: "daemon", "clock", "modem", "phones", "folders",
/// "requests", "settings", "faults" and "refusals", each as one line of JSON.
class Panes {
 public:
  explicit Panes(Interpreter& interpreter) : interpreter_(interpreter) {}

  /// Lets the gateway carry out the commands that its API accepted, and returns all data.
  std::map<std::string, std::string> read();

 private:
  void readLog(SyslogServer& syslog);

  Interpreter& interpreter_;
  std::size_t nextSent_ = 0;
  std::size_t nextLine_ = 0;                 ///< of the log
  std::string checked_;                      ///< the "NUMBER TEXT" that the daemon checked last
  Json::Value refusals_{Json::objectValue};  ///< the reasons, by "NUMBER TEXT"
};

}  // namespace Simulator
