#include "soak/Load.h"

#include <algorithm>
#include <cstdio>

namespace {

// As the settings of the simulated gateway have them.
constexpr char permittedNumber[] = "+4917012345";
constexpr char permittedCommand[] = "p secret #ping ";
constexpr char strangersNumber[] = "+4917054321";
constexpr char numbers[][12] = {"+4917011111", "+4917022222"};

std::string header(unsigned reference, std::size_t count, std::size_t number) {
  char text[64];
  std::snprintf(text, sizeof(text), "\\x05\\x00\\x03\\x%02x\\x%02zx\\x%02zx", reference, count, number);
  return text;
}

}  // namespace

void Load::add() {
  for (unsigned left = below(3); left > 0; --left) {
    const unsigned kind = below(10);
    if (kind < 5)
      receiveText();
    else if (kind < 7)
      receiveCommand();
    else
      receiveParts();
  }
  if (below(3) == 0) queue();
  const auto waits =
      std::stable_partition(late_.begin(), late_.end(), [](const Part& part) { return part.passes == 0; });
  std::for_each(late_.begin(), waits, [this](const Part& part) { deliver(part); });
  late_.erase(late_.begin(), waits);
  for (Part& part : late_) --part.passes;
}

void Load::release() {
  for (const Part& part : late_) deliver(part);
  late_.clear();
}

void Load::deliver(const Part& part) {
  gateway_.modem.receive(permittedNumber, part.userData);
  ledger_.enterPart(part.number, Ledger::Kind::Text, part.first, part.count);
}

void Load::receiveText() {
  const unsigned number = ledger_.newNumber();
  gateway_.modem.receive(numbers[below(2)],
                         "Text " + Ledger::token(number) + std::string(below(100), '.') + "\\n");
  ledger_.enterIncoming(number, Ledger::Kind::Text);
}

void Load::receiveCommand() {
  const bool isPermitted = below(2) == 0;
  const unsigned number = ledger_.newNumber();
  gateway_.modem.receive(isPermitted ? permittedNumber : strangersNumber,
                         permittedCommand + Ledger::token(number) + " 3");
  ledger_.enterIncoming(number, isPermitted ? Ledger::Kind::Command : Ledger::Kind::StrangersCommand);
}

void Load::receiveParts() {
  reference_ = (reference_ + 1) % 256;
  const unsigned count = 2 + below(3);
  std::vector<Part> parts;
  for (unsigned i = 1; i <= count; ++i) {
    const unsigned number = ledger_.newNumber();
    const unsigned first = parts.empty() ? number : parts[0].first;
    parts.push_back(
        {header(reference_, count, i) + "part " + Ledger::token(number), number, first, count, below(4)});
  }
  std::shuffle(parts.begin(), parts.end(), random_);
  late_.insert(late_.end(), parts.begin(), parts.end());
}

void Load::queue() {
  const unsigned number = ledger_.newNumber();
  const bool isRefused = below(4) == 0;
  const char* const recipient = isRefused ? refusedNumber : numbers[below(2)];
  const std::string guid = gateway_.folders.queue(recipient, "Out " + Ledger::token(number), below(3));
  if (!guid.empty()) ledger_.enterQueued(number, guid, isRefused);
}
