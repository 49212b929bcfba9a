#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <ctime>
#include <filesystem>

#include "daemon/StartUp.h"
#include "storage/MessageRecord.h"
#include "veldctl/Api.h"
#include "veldctl/Census.h"
#include "veldctl/Commands.h"
#include "veldctl/ModemStatus.h"
#include "veldctl/OnItsWay.h"
#include "veldctl/Processes.h"
#include "veldctl/Times.h"

namespace {

namespace fs = std::filesystem;

// Seconds. A tool takes some while for one message; what is on its way is filed in the same pass.
constexpr std::int64_t longTool = 60, veryLongTool = 300, longStaged = 60, longUnfiled = 60;
constexpr unsigned lowRoom = 10;  // per cent

std::string since(std::int64_t seconds) { return " since " + Times::full(std::time(nullptr) - seconds); }

void reportTool(Report& report, const Process& daemon, const std::vector<Process>& all) {
  const Work work = workOf(daemon, all);
  Verdict verdict = Well;
  if (work.age >= longTool) verdict = Look;
  if (work.age >= veryLongTool) verdict = Ill;
  const bool isIdle = work.commandLine.empty();
  report.add(verdict, isIdle ? "" : "it waits" + since(work.age) + " for: " + work.commandLine,
             {"tool_seconds", work.age, {}});
  const bool asks = asksApi(daemon);
  report.add(Well, asks ? "it waits for the local API" : "", {"api_requests", asks ? 1 : 0, {}});
}

void reportNoDaemon(Report& report, const Json::Value& settings) {
  const bool isOff = MessageRecord::member(settings, SettingsKey::enabled) == false;
  report.add(isOff ? Well : Ill, isOff ? "SMS is switched off" : "the daemon does not run",
             {"daemons", 0, {}});
}

// The folder in /proc of the daemon; empty when it does not run.
std::string reportDaemon(Report& report, const Json::Value& settings) {
  const std::vector<Process> all = processes();
  const auto isDaemon = [](const Process& process) { return process.isDaemon(); };
  const auto daemon = std::find_if(all.begin(), all.end(), isDaemon);
  if (daemon == all.end()) {
    reportNoDaemon(report, settings);
    return "";
  }
  const auto count = std::count_if(all.begin(), all.end(), isDaemon);
  report.add(Well, "the daemon runs" + since(daemon->age) + " as process " + std::to_string(daemon->pid),
             {"daemons", count, {}});
  if (count > 1) report.add(Look, "another daemon runs");
  report.add(Well, "", {"age_seconds", daemon->age, {}});
  reportTool(report, *daemon, all);
  return daemon->folder();
}

void reportOnItsWay(Report& report, const std::string& root) {
  const OnItsWay found = readOnItsWay(root);
  if (!found.isReadable) report.add(Look, "the spool cannot be read");
  const bool isLong = found.since != 0 && std::time(nullptr) - found.since > longUnfiled;
  const std::string begin = found.since != 0 ? ", the first since " + Times::full(found.since) : "";
  report.count(isLong ? Look : Well, "received, not filed yet" + begin,
               {"unfiled", found.received, {{"way", "in"}}});
  report.count(Well, "sends answered, not filed yet", {"unfiled", found.answered, {{"way", "out"}}});
  report.count(Well, "sends begun", {"sends_begun", found.begun, {}});
  report.count(Look, "files of messages on their way are damaged", {"damaged", found.damaged, {}});
}

// Files that stay in the staging folder, which the daemon leaves empty. `seen` is the folder as it is reached
// from here: under its unit the daemon has a /tmp of its own.
void reportStaged(Report& report, const std::string& seen, const std::string& folder) {
  std::error_code gone;
  const auto stays = [](const fs::directory_entry& entry) {
    struct stat info;
    return lstat(entry.path().c_str(), &info) == 0 && std::time(nullptr) - info.st_mtime >= longStaged;
  };
  const auto count = std::count_if(fs::directory_iterator(seen, gone), fs::directory_iterator(), stays);
  report.count(Look, "files stay in " + folder, {"staged", count, {}});
}

bool isLow(std::uint64_t available, std::uint64_t all) { return available * 100 < all * lowRoom; }

void reportRoom(Report& report, const std::string& seen, const std::string& folder) {
  struct statvfs info;
  if (statvfs(seen.c_str(), &info) != 0) return;
  const bool isFull = info.f_bavail == 0 || (info.f_files > 0 && info.f_favail == 0);
  Verdict verdict = isLow(info.f_bavail, info.f_blocks) || isLow(info.f_favail, info.f_files) ? Look : Well;
  if (isFull) verdict = Ill;
  const auto bytes = static_cast<std::int64_t>(info.f_bavail * info.f_frsize);
  report.add(verdict, std::to_string(bytes / 1024) + " KiB are free for " + folder,
             {"free_bytes", bytes, {{"folder", folder}}});
}

Report::Form formOf(const Request& request) {
  if (request.has('p')) return Report::Form::Prometheus;
  return request.isJson() ? Report::Form::Json : Report::Form::Text;
}

}  // namespace

int status(const Request& request) {
  Report report(formOf(request));
  const ApiAnswer api = askForSettings();
  const bool answers = api.fault.empty();
  report.add(answers ? Well : Ill, api.fault, {"api_answers", answers ? 1 : 0, {}});
  const std::string process = reportDaemon(report, api.settings);
  if (ModemStatus::isKnown()) ModemStatus::report(report);
  reportMessages(report, request.folders, api.settings);
  reportOnItsWay(report, request.folders.root());
  const std::string seen = process.empty() ? stagingFolder : process + "/root" + stagingFolder;
  reportStaged(report, seen, stagingFolder);
  reportRoom(report, seen, stagingFolder);
  reportRoom(report, request.folders.root(), request.folders.root());
  return report.worst();
}
