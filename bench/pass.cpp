// Measures whole passes of the loop with the real provider and store. A shell script replaces the tool `sms`.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>

#include "bench/Bench.h"
#include "daemon/MainLoop.h"
#include "provider/SmsUtilsProvider.h"
#include "storage/FolderCollectionStorage.h"
#include "storage/MessageStore.h"

namespace {
constexpr unsigned storedMessages = 100;  // before a pass; also the limit

Json::Value commandSettings() {
  Json::Value settings;
  for (const char* const key : {"enabled", "checkinEnabled", "rebootEnabled"}) settings[key] = false;
  settings["whitelist"]["enabled"] = settings["password"]["enabled"] = true;
  settings["whitelist"]["numbers"] = Json::arrayValue;
  settings["password"]["text"] = "secret";
  return settings;
}

// The daemon's objects, which run in the process of the benchmark.
class Loop {
 public:
  explicit Loop(unsigned limit)
      : store_(makeMessageStore(folders_, limit, limit)), commands_(commandSettings()) {
    if (!commands_.loadConfig()) std::abort();
  }

  void pass() { runPass(provider_, storage_, commands_, inTransit_, {30, 60, 300}, retry_); }

 private:
  InTransit inTransit_{storeFolder, stagingFolder};
  SmsUtilsProvider provider_{&inTransit_};
  const std::shared_ptr<FolderCollectionStorage> folders_ =
      std::make_shared<FolderCollectionStorage>(storeFolder, stagingFolder);
  const std::shared_ptr<ICollectionStorage> store_;
  CheckedStorage storage_{*store_, folders_->faults()};
  SMSCommand commands_;
  RetryState retry_;
};

void listNewMessages(unsigned count) {
  std::ofstream listing(listingFile);
  for (unsigned i = 0; i < count; ++i)
    listing << "index: " << i << "\naddr: +4917012345\nuser-data: \"The quick brown fox, " << i
            << " times\"\n";
}

void runToolCommands() {
  const std::string tool = smsTool;
  if (std::system((tool + "list unread > /dev/null").c_str()) != 0) std::abort();
  std::FILE* const pipe = popen((tool + "list read").c_str(), "r");
  char piece[1024];
  while (std::fgets(piece, sizeof(piece), pipe) != nullptr) benchmark::DoNotOptimize(piece);
  pclose(pipe);
}

void idlePass(benchmark::State& state) {
  fillInbox(storedMessages);
  listNewMessages(0);
  Loop loop(storedMessages);
  runBesideFloor(state, [&] { loop.pass(); }, runToolCommands);
}
BENCHMARK(idlePass)->UseManualTime()->MinTime(4)->Unit(benchmark::kMillisecond);

void passWithStored(benchmark::State& state) {
  const auto stored = static_cast<unsigned>(state.range(0));
  fillInbox(stored);
  listNewMessages(1);
  Loop loop(stored);
  runAlone(state, [] {}, [&] { loop.pass(); });
}
BENCHMARK(passWithStored)
    ->Arg(1)
    ->Arg(250)
    ->Arg(500)
    ->Arg(1000)
    ->Arg(2000)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

// Files new messages in a store that has reached its limit.
void passWithNew(benchmark::State& state) {
  listNewMessages(static_cast<unsigned>(state.range(0)));
  Loop loop(storedMessages);
  runAlone(state, [] { fillInbox(storedMessages); }, [&] { loop.pass(); });
}
BENCHMARK(passWithNew)
    ->Arg(1)
    ->Arg(250)
    ->Arg(500)
    ->Arg(1000)
    ->UseManualTime()
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond);

// Files new messages in a store that is empty at first, and stays below its limit.
void passIntoEmptyStore(benchmark::State& state) {
  const auto count = static_cast<unsigned>(state.range(0));
  listNewMessages(count);
  Loop loop(count);
  runAlone(state, [] { fillInbox(0); }, [&] { loop.pass(); });
}
BENCHMARK(passIntoEmptyStore)
    ->Arg(1)
    ->Arg(250)
    ->Arg(500)
    ->Arg(1000)
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMillisecond);
}  // namespace
