#include "proof/Windows.h"

#include <map>

const std::vector<Window> windows = {
    {"The tool dies in the middle of a listing", Kind::Incoming, Fault::CutListing, Harm::Lost | Harm::Apart},
    {"The tool does not delete", Kind::Incoming, Fault::NotDeleted, Harm::Twice | Harm::Apart},
    {"SIGKILL or a power cut before the modem has deleted", Kind::Incoming, Fault::Listed,
     Harm::Twice | Harm::Apart},
    {"SIGKILL before a command is posted: filed, not obeyed, and the log says so", Kind::Command,
     Fault::Unobeyed, Harm::Unobeyed},
    {"A whitelist entry without a text form: not obeyed", Kind::Command, Fault::BadWhitelist, Harm::Unobeyed},
    {"The local API fails when a command is posted", Kind::Command, Fault::ApiFault, Harm::Unobeyed},
    {"The tool does not send, whatever it says", Kind::Outgoing, Fault::SendFault, Harm::Unsent},
    {"SIGKILL or a power cut while sending: counted as failed, and the log says so", Kind::Outgoing,
     Fault::Unanswered, Harm::Unsent | Harm::SentAgain},
    {"No room under /tmp for the text", Kind::Outgoing, Fault::TmpFull, Harm::Unsent},
    {"What the daemon noted of the message is damaged", Kind::Incoming | Kind::Outgoing, Fault::Damaged,
     Harm::Any},
};

const Window* windowOf(unsigned harm, unsigned kind, unsigned faults) {
  for (const Window& window : windows)
    if ((window.fault & faults) != 0 && (window.kinds & kind) != 0 && (window.harms & harm) != 0)
      return &window;
  return nullptr;
}

std::string Harm::name(unsigned harm) {
  static const std::map<unsigned, std::string> names = {{Lost, "lost"},     {Twice, "twice"},
                                                        {Apart, "apart"},   {Unobeyed, "not obeyed"},
                                                        {Unsent, "unsent"}, {SentAgain, "sent again"}};
  return names.at(harm);
}
