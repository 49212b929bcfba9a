#pragma once

#include <map>
#include <string>

#include "simulator/console/Interpreter.h"

namespace Simulator {
/// The data that the page shows. Each pane has a name and one line of JSON. The names are "daemon", "clock",
/// "modem", "phones", "folders", "requests", "settings", "faults" and "refusals".
class Panes {
 public:
  explicit Panes(Interpreter& interpreter) : interpreter_(interpreter) {}

  /// Lets the gateway carry out the commands that its API accepted. Returns all panes by their names.
  std::map<std::string, std::string> read();

 private:
  void readLog(SyslogServer& syslog);

  Interpreter& interpreter_;
  std::size_t nextSent_ = 0;                 ///< the number of the next sent message to read
  std::size_t nextLine_ = 0;                 ///< the number of the next log line to read
  std::string checked_;                      ///< "NUMBER TEXT" of the last text that the daemon checked
  Json::Value refusals_{Json::objectValue};  ///< the reason for each refused "NUMBER TEXT"
};
}  // namespace Simulator
