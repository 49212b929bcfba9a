#pragma once

#include <ostream>
#include <string>
#include <vector>

/// The faults that a message may meet on its way, which of them may cost or repeat it, and how often that
/// came to pass.
class LossWindows {
 public:
  enum Direction { Incoming, Command, Outgoing };

  /// What lies outside of every window is written to `report` at once.
  explicit LossWindows(std::ostream& report);

  /// Counts a message that met these faults (Fault) on its way.
  void expose(Direction direction, unsigned faults);
  /// A message is nowhere (or a command was not obeyed), or went out twice or more, after these faults.
  void lose(Direction direction, const std::string& message, unsigned faults);
  void repeat(Direction direction, const std::string& message, unsigned faults);
  /// The parts of a message never became one record, though one was filed.
  void leaveApart(const std::string& message, unsigned faults);
  /// Something that no fault explains.
  void fault(const std::string& text);

  /// Writes the table; false when something lay outside of every window.
  bool settle();

 private:
  struct Window {
    const char* name;
    Direction direction;
    unsigned fault;
    bool mayLose, mayRepeat;
    unsigned exposed = 0, lost = 0, repeated = 0;
  };
  Window* find(Direction direction, unsigned faults, bool Window::* may);

  std::ostream& report_;
  std::vector<Window> windows_;
  unsigned apart_ = 0;
  unsigned faults_ = 0;
};
