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

// The numbers of the parts in the order in which they come in: those of `order` first, then the others.
std::vector<unsigned> orderParts(std::vector<unsigned> order, unsigned count,
                                 const std::vector<unsigned>& repeated) {
  for (unsigned number = 1; number <= count; ++number)
    if (!contains(order, number)) order.push_back(number);
  order.insert(order.end(), repeated.begin(), repeated.end());
  return order;
}

struct Delivery {
  std::vector<unsigned> order, repeated, lost, held;

  bool fits(unsigned count) const {
    for (const auto* numbers : {&order, &repeated, &lost, &held}) {
      for (const unsigned number : *numbers)
        if (number == 0 || number > count) return false;
    }
    return true;
  }
};

Answer deliver(Gateway& gateway, const std::string& sender, const GsmEncoder& encoder,
               const Delivery& delivery) {
  const auto count = static_cast<unsigned>(encoder.parts.size());
  if (!delivery.fits(count))
    return wrong("The message has " + counted(count, "part") + "; parts are counted from 1.");
  std::size_t held = 0;
  std::size_t delivered = 0;
  for (const unsigned number : orderParts(delivery.order, count, delivery.repeated)) {
    const std::string& part = encoder.parts[number - 1];
    if (contains(delivery.lost, number)) continue;
    if (contains(delivery.held, number)) {
      gateway.phones.held.emplace_back(sender, part);
      ++held;
    } else {
      gateway.modem.receive(sender, part);
      ++delivered;
    }
  }
  std::string text = "The modem has " + counted(delivered, "message") + " from " + sender;
  if (held > 0) text += "; " + counted(held, "part") + " held back until \"release\"";
  text += ".\n";
  for (const std::string& note : encoder.notes) text += "Note: " + note + "\n";
  return {true, text};
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
  if (encoder.parts.size() > 1 && !given.has("--reference")) ++gateway.phones.nextReference;
  const Delivery delivery{given.numbers("--order"), given.numbers("--repeat"), given.numbers("--lose"),
                          given.numbers("--hold")};
  gateway.phones.texts.push_back({sender, text, true, gateway.clock.now()});
  Answer answer;
  for (unsigned left = given.number("--times", 1); answer.good && left > 0; --left)
    answer = deliver(gateway, sender, encoder, delivery);
  return answer;
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
    return wrong("There is no file " + word + ", or it is empty; a listing has a line feed (\\n).");
  gateway.modem.receiveRaw(text);
  return {true, "The modem lists " + std::to_string(text.size()) + " bytes as they are."};
}

Answer queue(Gateway& gateway, const Arguments& given) {
  const std::string guid = gateway.folders.queue(given.word(0), given.word(1), given.number("--retries", 0));
  return guid.empty() ? wrong("The record could not be written.") : Answer{true, "Queued as " + guid + "."};
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
       "a message comes in from NUMBER; the options are about the parts of a long one", receive},
      {"release", "", "the parts that were held back come in", release},
      {"listing", "FILE|TEXT", "the modem lists a file, or a text with line feeds, as it is", listing},
      {"queue", "NUMBER TEXT [--retries N]", "another program of the gateway queues a message to NUMBER",
       queue},
      {"refuse", "NUMBER", "the modem refuses to send to NUMBER", setRefused<true>},
      {"accept", "NUMBER", "the modem sends to NUMBER again", setRefused<false>},
  };
}

}  // namespace Simulator
