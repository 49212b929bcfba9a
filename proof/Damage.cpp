#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "proof/Proofs.h"
#include "simulator/support/Files.h"

namespace {

using Simulator::MessageFolders, Simulator::readFile;

const std::string store = MessageFolders::root, modem = Simulator::Modem::storeFolder;
constexpr char keptStore[] = "/var/config/kept", keptModem[] = "/run/kept";

// A place at which one bit of a file is flipped, or the file is truncated.
struct Point {
  std::string path;
  std::size_t at;
  unsigned bit;
  static constexpr unsigned truncate = 8;  ///< instead of a bit

  std::string name() const { return std::filesystem::path(path).filename(); }
  std::string applyTo(std::string content) const {
    if (bit == truncate) return content.substr(0, at);
    content[at] = static_cast<char>(content[at] ^ (1 << bit));
    return content;
  }
};

void require(bool good) {
  if (!good) std::abort();
}

// Leaves one message of each kind on its way, in the spool.
void prepare(World& world) {
  const std::string received = MessageFolders::pathOf("received"), sent = MessageFolders::pathOf("sent");
  world.start();
  const std::size_t parts = world.enter("came in two parts", World::other, 2);
  world.deliver(parts, 0);
  world.pass();
  require(World::freeze(received) && World::freeze(sent));
  world.deliver(parts, 1);
  world.pass();
  world.receive("not filed yet");
  world.receive("p secret #ping 8.8.4.4", World::friendly);
  world.queue("sent and not moved");
  world.pass();
  world.queue("was being sent");
  require(world.reach("send"));
  world.kill(true);
  require(World::thaw(received) && World::thaw(sent) && world.lives);
}

// Replaces a folder by a copy of another.
void copy(const std::string& from, const std::string& to) {
  require(std::system(("rm -rf " + to + " && cp -aT " + from + " " + to).c_str()) == 0);
}

std::vector<Point> pointsOf(const std::vector<std::string>& paths) {
  std::vector<Point> points;
  for (const std::string& path : paths)
    for (std::size_t at = 0; at < readFile(path).size(); ++at)
      for (unsigned bit = 0; bit <= Point::truncate; ++bit) points.push_back({path, at, bit});
  return points;
}

// Lets the daemon live with the damaged file. Returns the problems.
std::vector<std::string> tryOne(World& world, const Point& point) {
  const std::string whole = readFile(point.path), damaged = point.applyTo(whole);
  const std::string aside = point.path + ".damaged";
  const std::size_t logged = world.gateway().syslog.lines().size();
  std::ofstream(point.path, std::ios::binary) << damaged;
  world.ledger.met(Fault::Damaged, &whole);
  world.start();
  world.receive("came in afterwards");
  world.queue("was queued afterwards");
  world.pass(2);
  world.stop();
  std::vector<std::string> problems;
  if (!world.lives) problems.push_back("the daemon fails on the damage, " + world.daemon().ending());
  world.lives = true;
  if (world.daemon().running()) world.kill(true);
  require(world.lives);
  for (const Ledger::Finding& finding : world.settle())
    if (finding.window == nullptr && finding.text != "left: " + aside) problems.push_back(finding.text);
  if (readFile(aside) != damaged) problems.emplace_back("the file is not set aside");
  for (const auto& line : world.gateway().syslog.lines(logged))
    if (line.text.find(point.name()) != std::string::npos) return problems;
  problems.emplace_back("no line of the log names the file");
  return problems;
}

}  // namespace

bool damage(const Words& words) {
  const unsigned shard = numberOf(words[0]), shards = numberOf(words[1]);
  World world;
  prepare(world);
  copy(store, keptStore);
  copy(modem, keptModem);
  const Ledger before = world.ledger;
  const std::vector<std::string> files = World::ownFiles();
  std::vector<Point> points = pointsOf(files);
  const std::size_t all = points.size();
  std::mt19937 random(numberOf(words[3]));
  points = sampleOf(std::move(points), numberOf(words[2]), random);
  unsigned tried = 0, harmful = 0;
  for (std::size_t i = shard; i < points.size(); i += shards, ++tried) {
    copy(keptStore, store);
    copy(keptModem, modem);
    world.ledger = before;
    const std::vector<std::string> problems = tryOne(world, points[i]);
    for (const std::string& problem : problems)
      std::cout << points[i].name() << ", byte " << points[i].at << ", bit " << points[i].bit << ": "
                << problem << std::endl;
    if (!problems.empty()) ++harmful;
  }
  std::cout << "damage: " << files.size() << " files, " << tried << " of " << all << " damages tried, "
            << harmful << " harmful" << std::endl;
  return tried > 0 && harmful == 0;
}
