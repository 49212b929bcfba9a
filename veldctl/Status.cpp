#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <fstream>

#include "daemon/RetryStep.h"
#include "daemon/StartUp.h"
#include "storage/SpoolEntry.h"
#include "storage/MessageRecord.h"
#include "storage/MessageStatus.h"
#include "veldctl/Health.h"

namespace {

namespace fs = std::filesystem;
namespace Key = MessageRecord::Key;
using namespace Output;

// Seconds. A tool takes some while it sends; a message waits for a pass, and for those before it.
constexpr std::int64_t longTool = 60, veryLongTool = 300, longQueued = 600, longStaged = 60;
constexpr unsigned lowRoom = 10;  // per cent

struct Process {
  int pid = 0, parent = 0, session = 0;
  std::int64_t age = 0;  // seconds
  char name[16] = "";
};

std::string firstLine(const fs::path& file) {
  std::ifstream stream(file);
  std::string line;
  std::getline(stream, line);
  return line;
}

std::vector<Process> processes() {
  // PID (NAME) STATE PARENT GROUP SESSION, and as the 22nd the start in ticks since the boot; no zombies.
  constexpr char fields[] =
      "%d (%15[^)]) %*1[^Z] %d %*d %d %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %*s %lld";
  std::vector<Process> all;
  timespec now{};
  clock_gettime(CLOCK_BOOTTIME, &now);
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
    const std::string stat = firstLine(entry.path() / "stat");
    Process next;
    long long start = 0;
    if (std::sscanf(stat.c_str(), fields, &next.pid, next.name, &next.parent, &next.session, &start) != 5)
      continue;
    next.age = now.tv_sec - start / sysconf(_SC_CLK_TCK);
    all.push_back(next);
  }
  return all;
}

// The daemon leads a session; what it starts for a moment bears its name, too, but does not.
bool isDaemon(const Process& process) {
  return std::string("veld") == process.name && process.session == process.pid;
}

// Syslog is one socket; another is a request to the local API.
bool asksApi(const std::string& process) {
  std::error_code gone;
  const auto isSocket = [&](const fs::directory_entry& entry) {
    return fs::read_symlink(entry.path(), gone).string().compare(0, 7, "socket:") == 0;
  };
  return std::count_if(fs::directory_iterator(process + "/fd", gone), fs::directory_iterator(), isSocket) > 1;
}

std::string since(std::int64_t seconds) {
  const std::time_t then = std::time(nullptr) - seconds;
  char text[] = " since YYYY-mm-dd HH:MM:SS";
  std::strftime(text, sizeof(text), " since %F %T", std::localtime(&then));
  return text;
}

// Where /proc has the daemon; empty when it does not run.
std::string reportProcesses(Report& report, const Json::Value& settings) {
  const std::vector<Process> all = processes();
  const auto daemon = std::find_if(all.begin(), all.end(), isDaemon);
  const auto count = std::count_if(all.begin(), all.end(), isDaemon);
  const bool api = !settings.isNull(), off = MessageRecord::member(settings, SettingsKey::enabled) == false;
  report.add(api ? Well : Ill, api ? "" : "the local API does not answer", "api_answers", api ? 1 : 0);
  if (count == 0) {
    report.add(off ? Well : Ill, off ? "SMS is switched off" : "the daemon does not run", "daemons");
    return "";
  }
  const std::string folder = "/proc/" + std::to_string(daemon->pid);
  report.add(Well, "the daemon runs" + since(daemon->age) + " as process " + folder.substr(6), "daemons",
             count);
  if (count > 1) report.add(Look, "another daemon runs");
  report.add(Well, "", "age_seconds", daemon->age);

  // The shells by which it was started say less than the tool.
  std::string tool;
  std::int64_t age = 0;
  const auto childOf = [&](int pid) {
    return std::find_if(all.begin(), all.end(), [pid](const Process& child) { return child.parent == pid; });
  };
  for (auto child = childOf(daemon->pid); child != all.end(); child = childOf(child->pid)) {
    tool = firstLine("/proc/" + std::to_string(child->pid) + "/cmdline");
    age = std::max(age, child->age);
  }
  std::replace(tool.begin(), tool.end(), '\0', ' ');
  report.add(age >= veryLongTool ? Ill
             : age >= longTool   ? Look
                                 : Well,
             tool.empty() ? "" : "it waits" + since(age) + " for: " + tool, "tool_seconds", age);
  const bool asks = asksApi(folder);
  report.add(Well, asks ? "it waits for the local API" : "", "api_requests", asks ? 1 : 0);
  return folder;
}

void reportMessages(Report& report, const Folders& folders, const Json::Value& settings) {
  std::int64_t broken = 0, incomplete = 0, again = 0, never = 0, oldest = 0;
  for (const int status : MessageStatus::all) {
    const unsigned before = complaints();
    const auto names = folders.names({status});
    for (const auto& file : names) {
      const std::optional<Message> message = folders.read(status, file.first);
      if (!message) continue;
      if (!message->fault.empty()) {
        ++broken;
        report.add(Look, folders.path(status, file.first) + ": " + message->fault);
        continue;
      }
      if (MessageRecord::has(message->record, Key::Parts)) ++incomplete;
      if (status == MessageStatus::Failed) ++(mayRetry(message->record) ? again : never);
      const std::int64_t age = std::time(nullptr) - message->changed / 1'000'000'000;
      if (status == MessageStatus::Sending) oldest = std::max(oldest, age);
    }
    const std::string box = MessageStatus::text(status), label = "{folder=\"" + box + "\"}";
    const auto count = static_cast<std::int64_t>(names.size());
    const bool inbox = status == MessageStatus::Received;
    const auto& limit =
        MessageRecord::member(settings, inbox ? SettingsKey::receivedLimit : SettingsKey::sentLimit);
    const std::string of = limit.isUInt() ? " of " + limit.asString() : "";
    report.add(complaints() > before ? Ill : Well, box + ": " + std::to_string(count).append(of),
               "messages" + label, count);
    if (limit.isUInt()) report.add(Well, "", "limit" + label, limit.asUInt());
  }
  report.add(oldest > longQueued ? Look : Well,
             oldest > 0 ? "the oldest queued message waits" + since(oldest) : "", "oldest_queued_seconds",
             oldest);
  report.count(Well, again, " failed and will be tried again", "failed{again=\"yes\"}");
  report.count(Look, never, " failed for good", "failed{again=\"no\"}");
  report.count(Well, incomplete, " wait for parts", "incomplete");
  report.add(Well, "", "broken_files", broken);
}

// What the daemon has taken off the modem or sent, and not yet filed: for a moment in each pass, or because
// it hangs, was ended, or cannot file.
void reportSpool(Report& report, const std::string& root) {
  const Spool::Survey spool = Spool::survey(root);
  if (!spool.readable) report.add(Look, "the spool cannot be read");
  report.count(Look, spool.damaged, " damaged files lie in the spool", "spool_damaged");
  std::int64_t unfiled = 0, begun = 0;
  std::string since;
  for (const Spool::Note& note : spool.notes) {
    const std::optional<SpoolEntry> entry = parseEntry(note);
    if (!entry) continue;
    if (std::holds_alternative<BegunSend>(*entry)) ++begun;
    if (const auto* const answered = std::get_if<AnsweredSend>(&*entry)) unfiled += answered->filed ? 0 : 1;
    for (const Batch* const batch : {static_cast<const Batch*>(std::get_if<ReceivedBatch>(&*entry)),
                                     static_cast<const Batch*>(std::get_if<MergedBatch>(&*entry))})
      if (batch != nullptr && batch->filed < batch->records.size()) {
        unfiled += static_cast<std::int64_t>(batch->records.size() - batch->filed);
        const Json::Value& time = MessageRecord::member(batch->records[batch->filed], Key::Timestamp);
        if (since.empty() && time.isString()) since = ", since " + time.asString();
      }
  }
  report.count(Well, unfiled, " wait to be filed" + since, "unfiled");
  report.count(Well, begun, " send was begun", "sends_begun");
}

// The staging folder and the room, where a folder of the daemon's is `seen` from here: under its unit the
// daemon has a /tmp of its own.
void reportStaged(Report& report, const std::string& seen, const std::string& folder) {
  std::error_code gone;
  const auto stays = [](const fs::directory_entry& entry) {
    struct stat info;
    return stat(entry.path().c_str(), &info) == 0 && std::time(nullptr) - info.st_mtime >= longStaged;
  };
  const auto count = std::count_if(fs::directory_iterator(seen, gone), fs::directory_iterator(), stays);
  report.count(Look, count, " files stay in " + folder, "staged");
}

void reportRoom(Report& report, const std::string& seen, const std::string& folder) {
  struct statvfs info;
  if (statvfs(seen.c_str(), &info) != 0) return;
  const bool full = info.f_bavail == 0 || (info.f_files > 0 && info.f_favail == 0);
  const bool low =
      info.f_bavail * 100 < info.f_blocks * lowRoom || info.f_favail * 100 < info.f_files * lowRoom;
  const auto bytes = static_cast<std::int64_t>(info.f_bavail * info.f_frsize);
  report.add(full  ? Ill
             : low ? Look
                   : Well,
             std::to_string(bytes / 1024) + " KiB are free for " + folder,
             "free_bytes{folder=\"" + folder + "\"}", bytes);
}

}  // namespace

bool isDaemonRunning() {
  const std::vector<Process> all = processes();
  return std::any_of(all.begin(), all.end(), isDaemon);
}

void reportStatus(Report& report, const Folders& folders, const std::string& staging,
                  const Json::Value& settings) {
  const std::string process = reportProcesses(report, settings);
  const std::string seen = process.empty() ? staging : process + "/root" + staging;
  reportMessages(report, folders, settings);
  reportSpool(report, folders.root());
  reportStaged(report, seen, staging);
  reportRoom(report, seen, staging);
  reportRoom(report, folders.root(), folders.root());
}
