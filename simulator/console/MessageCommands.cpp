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
  for (unsigned number = 1; number <= count; ++number) {
    if (!contains(order, number)) order.push_back(number);
  }
  order.insert(order.end(), repeated.begin(), repeated.end());
  return order;
}

struct Delivery {
  std::vector<unsigned> order, repeated, lost, held;

  bool fits(unsigned count) const {
    for (const auto* numbers : {&order, &repeated, &lost, &held}) {
      for (const unsigned number : *numbers) {
        if (number == 0 || number > count) return false;
      }
    }
    return true;
  }
};

Answer deliver(Gateway& gateway, const std::string& sender, const GsmEncoder& encoder,
               const Delivery& delivery) {
  const auto count = static_cast<unsigned>(encoder.parts().size());
  if (!delivery.fits(count)) {
    return wrong("The message has " + counted(count, "part") + "; parts are counted from 1.");
  }
  std::size_t held = 0;
  std::size_t delivered = 0;
  for (const unsigned number : orderParts(delivery.order, count, delivery.repeated)) {
    const std::string& part = encoder.parts()[number - 1];
    if (contains(delivery.lost, number)) continue;
    if (contains(delivery.held, number)) {
      gateway.hold({sender, part});
      ++held;
    } else {
      gateway.modem().receive(sender, part);
      ++delivered;
    }
  }
  std::string text = "The modem has " + counted(delivered, "message") + " from " + sender;
  if (held > 0) text += "; " + counted(held, "part") + " held back until \"release\"";
  text += ".\n";
  for (const std::string& note : encoder.notes()) text += "Note: " + note + "\n";
  return {true, text};
}

Answer receive(Gateway& gateway, CommandLine& line) {
  static unsigned nextReference = 1;
  GsmEncoder::Options options;
  options.wideReference = line.takeFlag("--16-bit");
  options.parts = line.takeNumber("--parts").value_or(0);
  const std::optional<unsigned> reference = line.takeNumber("--reference");
  const unsigned times = line.takeNumber("--times").value_or(1);
  const Delivery delivery{line.takeNumbers("--order"), line.takeNumbers("--repeat"),
                          line.takeNumbers("--lose"), line.takeNumbers("--hold")};
  if (line.words().size() != 2 || !line.leftOption().empty()) return misuse();
  options.reference = reference.value_or(nextReference);
  GsmEncoder encoder;
  if (!encoder.encode(line.words()[1], options)) return wrong(encoder.problem());
  if (encoder.parts().size() > 1 && !reference) ++nextReference;
  gateway.phones().wrote(line.words()[0], line.words()[1], gateway.clock().now());
  Answer answer = deliver(gateway, line.words()[0], encoder, delivery);
  for (unsigned i = 1; answer.good && i < times; ++i)
    answer = deliver(gateway, line.words()[0], encoder, delivery);
  return answer;
}

Answer release(Gateway& gateway, CommandLine& line) {
  if (!line.words().empty()) return misuse();
  return {true, counted(gateway.release(), "part") + " released."};
}

Answer listing(Gateway& gateway, CommandLine& line) {
  if (line.words().size() != 1) return misuse();
  const std::string& word = line.words()[0];
  const std::string text = word.find('\n') == std::string::npos ? readFile(word) : word;
  if (text.empty())
    return wrong("There is no file " + word + ", or it is empty; a listing has a line feed (\\n).");
  gateway.modem().receiveRaw(text);
  return {true, "The modem lists " + std::to_string(text.size()) + " bytes as they are."};
}

Answer queue(Gateway& gateway, CommandLine& line) {
  const std::optional<unsigned> retries = line.takeNumber("--retries");
  if (line.words().size() != 2 || !line.leftOption().empty()) return misuse();
  Json::Value record;
  record["recipient"] = line.words()[0];
  record["message"] = line.words()[1];
  record["retries"] = retries.value_or(0);
  std::string guid;
  if (!gateway.queue(record, guid)) return wrong("The record could not be written.");
  return {true, "Queued as " + guid + "."};
}

Answer refuse(Gateway& gateway, CommandLine& line) {
  if (line.words().size() != 1) return misuse();
  gateway.modem().setRefused(line.words()[0], true);
  return {true, "The modem refuses " + line.words()[0] + "."};
}

Answer accept(Gateway& gateway, CommandLine& line) {
  if (line.words().size() != 1) return misuse();
  gateway.modem().setRefused(line.words()[0], false);
  return {true, "The modem accepts " + line.words()[0] + "."};
}

}  // namespace

const std::vector<Command>& messageCommands() {
  static const std::vector<Command> commands{
      {"receive",
       "NUMBER TEXT [--16-bit] [--parts N] [--reference N] [--order 2,1] [--hold 2] [--repeat 1] [--lose 2] "
       "[--times N]",
       "a message comes in from NUMBER; the options are about the parts of a long one", receive},
      {"release", "", "the parts that were held back come in", release},
      {"listing", "FILE|TEXT", "the modem lists a file, or a text with line feeds, as it is", listing},
      {"queue", "NUMBER TEXT [--retries N]", "another program of the gateway queues a message to NUMBER",
       queue},
      {"refuse", "NUMBER", "the modem refuses to send to NUMBER", refuse},
      {"accept", "NUMBER", "the modem sends to NUMBER again", accept},
  };
  return commands;
}

}  // namespace Simulator
