#include "proof/Windows.h"

#include <algorithm>

#include "proof/Fault.h"

namespace {

constexpr unsigned operator|(Harm a, Harm b) { return static_cast<unsigned>(a) | static_cast<unsigned>(b); }
constexpr unsigned only(Harm harm) { return static_cast<unsigned>(harm); }

}  // namespace

const Window windows[15] = {
    {"The tool dies in the middle of a listing", Kind::Incoming, Fault::CutListing, Harm::Lost | Harm::Apart},
    {"The tool does not delete", Kind::Incoming, Fault::NotDeleted, Harm::Twice | Harm::Apart},
    {"SIGKILL or a power cut before the modem has deleted", Kind::Incoming, Fault::Listed,
     Harm::Twice | Harm::Apart},
    {"No room under /var while filing", Kind::Incoming, Fault::DiskFull, 0},
    {"No room under /tmp while filing", Kind::Incoming, Fault::TmpFull, 0},
    {"A whitelist entry without a text form", Kind::Incoming, Fault::BadWhitelist, 0},
    {"SIGKILL while receiving", Kind::Incoming, Fault::Killed, 0},
    {"SIGKILL before a command is posted: filed, not obeyed, and the log says so", Kind::Command,
     Fault::Unobeyed, only(Harm::Unobeyed)},
    {"A whitelist entry without a text form: not obeyed", Kind::Command, Fault::BadWhitelist,
     only(Harm::Unobeyed)},
    {"The local API fails when a command is posted", Kind::Command, Fault::ApiFault, only(Harm::Unobeyed)},
    {"The tool does not send, whatever it says", Kind::Outgoing, Fault::SendFault, only(Harm::Unsent)},
    {"SIGKILL or a power cut while sending: counted as failed, and the log says so", Kind::Outgoing,
     Fault::Unanswered, Harm::Unsent | Harm::SentAgain},
    {"No room under /var while sending", Kind::Outgoing, Fault::DiskFull, 0},
    {"No room under /tmp for the text", Kind::Outgoing, Fault::TmpFull, only(Harm::Unsent)},
    {"What the daemon noted of the message is damaged", Kind::Incoming | Kind::Outgoing, Fault::Damaged, 63},
};

const char* nameOf(Harm harm) {
  constexpr const char* names[] = {"lost", "twice", "apart", "not obeyed", "unsent", "sent again"};
  unsigned place = 0;
  while ((static_cast<unsigned>(harm) >> place) > 1) ++place;
  return names[place];
}

const Window* windowOf(Harm harm, unsigned faults) {
  const auto* const found = std::find_if(std::begin(windows), std::end(windows), [&](const Window& window) {
    return (window.fault & faults) != 0 && (window.harms & only(harm)) != 0;
  });
  return found == std::end(windows) ? nullptr : found;
}

std::string Fault::names(unsigned faults) {
  constexpr const char* words[] = {"restarted",   "/var full",  "/tmp full",     "listing cut",
                                   "not deleted", "send fault", "bad whitelist", "API fault",
                                   "other fault", "killed",     "on the modem",  "send unanswered",
                                   "not obeyed",  "damaged"};
  std::string text;
  for (unsigned bit = 0; bit < std::size(words); ++bit)
    if ((faults >> bit & 1U) != 0) text += std::string(text.empty() ? "" : ", ") + words[bit];
  return text.empty() ? "no fault" : text;
}
