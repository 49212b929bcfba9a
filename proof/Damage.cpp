#include <sys/mount.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>

#include "proof/Fault.h"
#include "proof/Proofs.h"
#include "simulator/support/Files.h"

namespace {

namespace fs = std::filesystem;
using Simulator::MessageFolders;

const fs::path store = MessageFolders::root, modem = Simulator::Modem::storeFolder;
const fs::path keptStore = "/var/config/kept", keptModem = "/run/kept";
constexpr char aside[] = ".damaged";

// A place at which one bit of a file is flipped, or the file is truncated.
struct Point {
  std::string path;
  std::size_t at;
  unsigned bit;  ///< 8: the file is cut
};

void setReadOnly(const std::string& box, bool readOnly) {
  const std::string folder = MessageFolders::pathOf(box);
  const char* const path = folder.c_str();
  const bool good = readOnly
                        ? mount(path, path, nullptr, MS_BIND, nullptr) == 0 &&
                              mount(nullptr, path, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0
                        : umount2(path, MNT_DETACH) == 0;
  if (!good) std::abort();
}

// Leaves one message of each kind on its way in the store.
bool prepare(World& world) {
  if (!world.start()) return false;
  const unsigned parts = world.enter("came in two parts", World::other, 2);
  world.deliver(parts, 0);
  if (!world.pass()) return false;
  for (const char* const box : {"received", "sent"}) setReadOnly(box, true);
  world.deliver(parts, 1);
  if (!world.pass()) return false;
  world.receive("not filed yet");
  world.receive("p secret #ping 8.8.4.4", World::friendly);
  world.queue("sent and not moved");
  if (!world.pass()) return false;
  world.queue("was being sent");
  const bool good = world.reach("send") && world.kill(true);
  for (const char* const box : {"received", "sent"}) setReadOnly(box, false);
  return good;
}

class Runner {
 public:
  explicit Runner(const World::Programs& programs) : world_(programs) {
    if (!prepare(world_)) std::abort();
    keep();
  }

  bool run(unsigned shard, unsigned shards, unsigned sample, unsigned seed) {
    std::vector<Point> points = allPoints();
    const std::size_t all = points.size();
    if (sample > 0) {
      std::shuffle(points.begin(), points.end(), std::mt19937(seed));
      points.resize(std::min<std::size_t>(points.size(), sample));
    }
    unsigned tried = 0, harmful = 0;
    for (std::size_t i = shard; i < points.size(); i += shards, ++tried)
      if (!isHarmless(points[i])) ++harmful;
    std::cout << "damage: " << kept_.size() << " files, " << tried << " of " << all << " damages tried, "
              << harmful << " harmful" << std::endl;
    return tried > 0 && harmful == 0;
  }

 private:
  // Keeps the messages as hard links, so that the restored files keep their inodes.
  void keep() {
    for (const std::string& path : World::ownFiles()) kept_.emplace_back(path, Simulator::readFile(path));
    fs::copy(store, keptStore, fs::copy_options::recursive | fs::copy_options::create_hard_links);
    fs::copy(modem, keptModem, fs::copy_options::recursive);
    ledger_ = world_.ledger;
  }

  void restore() {
    for (const fs::path& folder : {store, modem})
      for (const fs::directory_entry& entry : fs::directory_iterator(folder)) fs::remove_all(entry);
    fs::copy(keptStore, store, fs::copy_options::recursive | fs::copy_options::create_hard_links);
    fs::copy(keptModem, modem, fs::copy_options::recursive);
    for (const auto& [path, content] : kept_) write(path, content);
    world_.ledger = ledger_;
  }

  // Not Simulator::writeFile(), which leaves a temporary file in the folder if it fails.
  static void write(const std::string& path, const std::string& content) {
    fs::remove(path);
    std::ofstream(path, std::ios::binary) << content;
  }

  std::vector<Point> allPoints() const {
    std::vector<Point> points;
    for (const auto& [path, content] : kept_)
      for (std::size_t at = 0; at < content.size(); ++at)
        for (unsigned bit = 0; bit <= 8; ++bit) points.push_back({path, at, bit});
    return points;
  }

  bool isHarmless(const Point& point) {
    restore();
    const std::string whole = Simulator::readFile(point.path);
    std::string damaged = whole.substr(0, point.bit < 8 ? whole.size() : point.at);
    if (point.bit < 8) damaged[point.at] = static_cast<char>(damaged[point.at] ^ (1 << point.bit));
    write(point.path, damaged);
    world_.ledger.met(Fault::Damaged, &whole);
    const std::vector<std::string> problems = live(point.path, damaged);
    for (const std::string& problem : problems)
      std::cout << fs::path(point.path).filename().string() << ", byte " << point.at
                << (point.bit < 8 ? ", bit " + std::to_string(point.bit) : ", cut") << ": " << problem
                << std::endl;
    return problems.empty();
  }

  std::vector<std::string> live(const std::string& path, const std::string& damaged) {
    std::vector<std::string> problems;
    const std::size_t logged = world_.gateway().syslog.lines().size();
    bool lives = world_.start();
    world_.receive("came in afterwards");
    world_.queue("was queued afterwards");
    lives = lives && world_.pass(2) && world_.stop();
    if (!lives) problems.push_back("the daemon does not live with it, " + world_.daemon().ending());
    if (!lives && world_.daemon().running() && !world_.kill(true)) std::abort();
    for (const Ledger::Finding& finding : world_.settle())
      if (finding.window == nullptr && finding.text != "left: " + path + aside)
        problems.push_back(finding.text);
    if (Simulator::readFile(path + aside) != damaged) problems.emplace_back("the file is not set aside");
    const auto lines = world_.gateway().syslog.lines(logged);
    const std::string name = fs::path(path).filename();
    if (std::none_of(lines.begin(), lines.end(),
                     [&](const auto& line) { return line.text.find(name) != std::string::npos; }))
      problems.emplace_back("no line of the log names the file");
    return problems;
  }

  World world_;
  Ledger ledger_{0};                                       // before the damage
  std::vector<std::pair<std::string, std::string>> kept_;  // the daemon's own files: path and content
};

}  // namespace

bool damage(const World::Programs& programs, const Words& words) {
  return Runner(programs).run(numberOf(words[0]), numberOf(words[1]), numberOf(words[2]), numberOf(words[3]));
}
