#include <iostream>
#include <stdexcept>

#include "veldctl/CommandLine.h"
#include "veldctl/Output.h"

namespace {
int misused(const std::string& text, const Command* command) {
  const std::string name = command != nullptr ? std::string(" ") + command->name : "";
  Output::complain(text);
  std::cerr << "See veldctl" << name << " --help" << std::endl;
  return Misused;
}

int run(const CommandLine::Parsed& parsed) {
  if (parsed.wantsVersion) {
    std::cout << "veldctl " VELD_VERSION << '\n';
    return Done;
  }
  if (parsed.wantsHelp) {
    std::cout << (parsed.command != nullptr ? CommandLine::help(*parsed.command) : CommandLine::help());
    return Done;
  }
  return parsed.command->run(parsed.request);
}
}  // namespace

int main(int count, char** words) {
  CommandLine::Parsed parsed;
  try {
    CommandLine::parse(count, words, parsed);
    const int status = run(parsed);
    return std::cout.flush() ? status : Bad;
  } catch (const Misuse& misuse) {
    return misused(misuse.what(), parsed.command);
  } catch (const std::runtime_error& error) {
    Output::complain(error.what());
    return Bad;
  }
}
