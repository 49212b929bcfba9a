#include "soak/LossWindows.h"

#include "soak/Fault.h"

LossWindows::LossWindows(std::ostream& report)
    : report_(report),
      windows_{
          {"The tool dies in the middle of a listing", Incoming, Fault::CutListing, true, false},
          {"The tool does not delete", Incoming, Fault::NotDeleted, false, true},
          {"SIGKILL before the modem has deleted", Incoming, Fault::Killed, false, true},
          {"No room under /var while filing", Incoming, Fault::DiskFull, false, false},
          {"No room under /tmp while filing", Incoming, Fault::TmpFull, false, false},
          {"A whitelist entry without a text form", Incoming, Fault::BadWhitelist, false, false},
          {"A new daemon within the same second", Incoming, Fault::Restarted, false, false},
          {"SIGKILL before a command is posted: filed, not obeyed", Command, Fault::Killed, true, false},
          {"A whitelist entry without a text form: not obeyed", Command, Fault::BadWhitelist, true, false},
          {"The local API fails when a command is posted", Command, Fault::ApiFault, true, false},
          {"The tool says that it sent, and did not", Outgoing, Fault::SendFault, true, false},
          {"SIGKILL while sending: counted as failed, tried again", Outgoing, Fault::Killed, false, true},
          {"No room under /var while filing what was sent", Outgoing, Fault::DiskFull, false, false},
          {"No room under /tmp for the text, or while filing", Outgoing, Fault::TmpFull, false, false},
      } {}

LossWindows::Window* LossWindows::find(Direction direction, unsigned faults, bool Window::* may) {
  for (Window& window : windows_)
    if (window.direction == direction && (window.fault & faults) != 0 && window.*may) return &window;
  return nullptr;
}

void LossWindows::expose(Direction direction, unsigned faults) {
  for (Window& window : windows_)
    if (window.direction == direction && (window.fault & faults) != 0) ++window.exposed;
}

void LossWindows::lose(Direction direction, const std::string& message, unsigned faults) {
  if (Window* const window = find(direction, faults, &Window::mayLose))
    ++window->lost;
  else
    fault(message + " was lost");
}

void LossWindows::repeat(Direction direction, const std::string& message, unsigned faults) {
  if (Window* const window = find(direction, faults, &Window::mayRepeat))
    ++window->repeated;
  else
    fault(message + " came or went more than once");
}

void LossWindows::leaveApart(const std::string& message, unsigned faults) {
  ++apart_;
  if (find(Incoming, faults, &Window::mayLose) == nullptr &&
      find(Incoming, faults, &Window::mayRepeat) == nullptr)
    fault(message + " was never joined");
}

void LossWindows::fault(const std::string& text) {
  ++faults_;
  report_ << "Outside of every window: " << text << "\n";
}

bool LossWindows::settle() {
  report_ << "| Window | Messages that met the fault | Lost | Repeated |\n|---|---|---|---|\n";
  for (const Window& window : windows_)
    report_ << "| " << window.name << " | " << window.exposed << " | " << window.lost << " | "
            << window.repeated << " |\n";
  report_ << "\nLong messages that stayed in parts because of the above: " << apart_
          << ". Outside of every window: " << faults_ << ".\n";
  return faults_ == 0;
}
