#pragma once

#include <map>
#include <string>

#include "simulator/console/Interpreter.h"

namespace Simulator {

/// What the page shows of a gateway, pane by pane: "daemon", "clock", "modem", "phones", "folders",
/// "requests", "settings", "faults" and "events", each as one line of JSON.
class PagePanes {
 public:
  explicit PagePanes(Interpreter& interpreter) : interpreter_(interpreter) {}

  /// Looks at the gateway anew, after it has done what its API was asked for. While a command is executed,
  /// what only one thread may look at stays as it was, and the daemon pane says "busy".
  void look();
  const std::map<std::string, std::string>& all() const { return panes_; }

 private:
  void lookFreely();
  void lookAlone();

  Interpreter& interpreter_;
  std::map<std::string, std::string> panes_;
  Json::Value daemon_{Json::objectValue};
  std::size_t sentSeen_ = 0;
};

}  // namespace Simulator
