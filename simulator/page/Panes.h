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

  /// Lets the gateway carry out the commands that its API accepted, and looks at everything.
  std::map<std::string, std::string> look();

 private:
  void readLog(SyslogServer& syslog);

  Interpreter& interpreter_;
  std::size_t sentSeen_ = 0;
  std::size_t logSeen_ = 0;
  std::string judged_;                       ///< the text that the daemon checked last
  Json::Value refusals_{Json::objectValue};  ///< the reasons, by "NUMBER TEXT"
};

}  // namespace Simulator
