#include <algorithm>

#include "simulator/console/Interpreter.h"
#include "simulator/modem/GsmEncoder.h"
#include "simulator/support/Files.h"

namespace Simulator {
namespace {
std::string counted(std::size_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

bool contains(const std::vector<unsigned>& numbers, unsigned number) {
  return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

// What the network does with the parts of a message. Each list contains numbers of parts, counted from 1.
struct Delivery {
  std::vector<unsigned> order, repeated, lost, held;

  bool fits(std::size_t count) const {
    for (const auto* numbers : {&order, &repeated, &lost, &held}) {
      for (const unsigned number : *numbers)
        if (number == 0 || number > count) return false;
    }
    return true;
  }

  // Returns the parts in the order of arrival: those in `order`, all others, and again those in `repeated`.
  std::vector<unsigned> arrivals(std::size_t count) const {
    std::vector<unsigned> numbers = order;
    for (unsigned number = 1; number <= count; ++number)
      if (!contains(order, number)) numbers.push_back(number);
    numbers.insert(numbers.end(), repeated.begin(), repeated.end());
    return numbers;
  }

  std::string text() const {
    std::string text;
    if (!held.empty()) text += ", " + counted(held.size(), "part") + " held back until \"release\"";
    if (!lost.empty()) text += ", " + counted(lost.size(), "part") + " lost";
    if (!repeated.empty()) text += ", " + counted(repeated.size(), "part") + " repeated";
    return text;
  }
};

void deliver(Gateway& gateway, const std::string& sender, const std::vector<std::string>& parts,
             const Delivery& delivery) {
  for (const unsigned number : delivery.arrivals(parts.size())) {
    const std::string& part = parts[number - 1];
    if (contains(delivery.lost, number)) continue;
    if (contains(delivery.held, number))
      gateway.phones.held.emplace_back(sender, part);
    else
      gateway.modem.receive(sender, part);
  }
}

Answer receive(Gateway& gateway, const Arguments& given) {
  const std::string& sender = given.word(0);
  const std::string& text = given.word(1);
  GsmEncoder::Options options;
  options.wideReference = given.has("--16-bit");
  options.parts = given.number("--parts", 0);
  options.reference = given.number("--reference", gateway.phones.nextReference);
  GsmEncoder encoder;
  if (const std::string problem = encoder.encode(text, options); !problem.empty()) return wrong(problem);
  const std::size_t parts = encoder.parts.size();
  const Delivery delivery{given.numbers("--order"), given.numbers("--repeat"), given.numbers("--lose"),
                          given.numbers("--hold")};
  if (!delivery.fits(parts))
    return wrong("The message has " + counted(parts, "part") + "; parts are counted from 1.");
  if (parts > 1 && !given.has("--reference")) ++gateway.phones.nextReference;
  gateway.phones.texts.push_back({sender, text, true, gateway.clock.now()});
  const unsigned times = given.number("--times", 1);
  for (unsigned i = 0; i < times; ++i) deliver(gateway, sender, encoder.parts, delivery);
  std::string answer = "The modem has " + counted(times, "message") + " from " + sender;
  if (parts > 1) answer += ", in " + counted(parts, "part") + (times > 1 ? " each" : "");
  answer += delivery.text() + ".\n";
  for (const std::string& note : encoder.notes) answer += "Note: " + note + "\n";
  return {true, answer};
}

Answer release(Gateway& gateway, const Arguments&) {
  const std::vector<Phones::Part> parts = std::exchange(gateway.phones.held, {});
  for (const auto& [number, userData] : parts) gateway.modem.receive(number, userData);
  return {true, counted(parts.size(), "part") + " released."};
}

Answer listing(Gateway& gateway, const Arguments& given) {
  const std::string& word = given.word(0);
  const std::string text = word.find('\n') == std::string::npos ? readFile(word) : word;
  if (text.empty())
    return wrong("The file " + word + " is missing or empty; a text must contain a line feed (\\n).");
  gateway.modem.receiveRaw(text);
  return {true, "The modem lists these " + std::to_string(text.size()) + " bytes."};
}

Answer queue(Gateway& gateway, const Arguments& given) {
  const std::string guid = gateway.folders.queue(given.word(0), given.word(1), given.number("--retries", 0));
  return guid.empty() ? wrong("Cannot write the record.") : Answer{true, "Queued as " + guid + "."};
}

template <bool refused>
Answer setRefused(Gateway& gateway, const Arguments& given) {
  gateway.modem.setRefused(given.word(0), refused);
  return {true, (refused ? "The modem refuses " : "The modem accepts ") + given.word(0) + "."};
}
}  // namespace

std::vector<Command> messageCommands() {
  return {
      {"receive",
       "NUMBER TEXT [--16-bit] [--parts N] [--reference N] [--order N,N] [--hold N,N] [--repeat N,N] "
       "[--lose N,N] [--times TIMES]",
       "the modem receives a message from NUMBER, TIMES times; the other options concern its parts", receive},
      {"release", "", "the modem receives the parts that --hold has held back", release},
      {"listing", "FILE|TEXT", "the modem lists a file, or a text with line feeds, unchanged", listing},
      {"queue", "NUMBER TEXT [--retries N]", "another program of the gateway queues a message to NUMBER",
       queue},
      {"refuse", "NUMBER", "the modem refuses to send to NUMBER", setRefused<true>},
      {"accept", "NUMBER", "the modem accepts NUMBER again", setRefused<false>},
  };
}
}  // namespace Simulator
