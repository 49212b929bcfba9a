#pragma once

#include <map>
#include <string>

#include "simulator/console/Interpreter.h"

namespace Simulator {

/// What the page shows of a gateway, pane by pane: "daemon", "clock", "modem", "phones", "folders",
/// "requests", "settings", "faults", "events" and "refusals", each as one line of JSON.
class Panes {
 public:
  explicit Panes(Interpreter& interpreter) : interpreter_(interpreter) {}

  /// Looks at the gateway anew, after it has done what its API was asked for.
  std::map<std::string, std::string> look();

 private:
  void readLog(SyslogServer& syslog);

  Interpreter& interpreter_;
  std::size_t sentSeen_ = 0;
  std::size_t logSeen_ = 0;
  std::string judged_;                       ///< the text that the daemon decided on last
  Json::Value refusals_{Json::objectValue};  ///< why it was refused, by "NUMBER TEXT"
};

}  // namespace Simulator
