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
#include "veldctl/Processes.h"
#include "veldctl/SpoolCounts.h"
#include "veldctl/Times.h"

namespace {
namespace fs = std::filesystem;

// Limits in seconds. The tool may be slow, but each pass files all messages that it has received and sent.
constexpr std::int64_t longTool = 60, veryLongTool = 300, longStaged = 60, longUnfiled = 60;
constexpr unsigned lowRoom = 10;  // per cent

std::string since(std::int64_t seconds) { return " since " + Times::full(std::time(nullptr) - seconds); }

void reportTool(Report& report, const Process& daemon, const std::vector<Process>& all) {
  const Work work = workOf(daemon, all);
  Verdict verdict = Well;
  if (work.age >= longTool) verdict = Look;
  if (work.age >= veryLongTool) verdict = Ill;
  const bool isIdle = work.commandLine.empty();
  report.add(verdict, isIdle ? "" : "the daemon has waited" + since(work.age) + " for: " + work.commandLine,
             {"tool_seconds", work.age, {}});
  const bool asks = asksApi(daemon);
  report.add(Well, asks ? "the daemon waits for the local API" : "", {"api_requests", asks ? 1 : 0, {}});
}

void reportNoDaemon(Report& report, const Json::Value& settings) {
  const bool isOff = MessageRecord::member(settings, SettingsKey::enabled) == false;
  report.add(isOff ? Well : Ill, isOff ? "SMS is switched off" : "the daemon does not run",
             {"daemons", 0, {}});
}

// Reports the daemon and returns its folder in /proc; empty if it does not run.
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
  if (count > 1) report.add(Look, "more than one daemon runs");
  report.add(Well, "", {"age_seconds", daemon->age, {}});
  reportTool(report, *daemon, all);
  return daemon->folder();
}

void reportSpool(Report& report, const std::string& root) {
  const SpoolCounts spool = readSpool(root);
  if (!spool.isReadable) report.add(Look, "the spool cannot be read");
  const bool isLong = spool.since != 0 && std::time(nullptr) - spool.since > longUnfiled;
  const std::string begin = spool.since != 0 ? "; the first arrived at " + Times::full(spool.since) : "";
  report.count(isLong ? Look : Well, "received but not filed yet" + begin,
               {"unfiled", spool.received, {{"way", "in"}}});
  report.count(Well, "sent but not filed yet", {"unfiled", spool.answered, {{"way", "out"}}});
  report.count(Well, "being sent by the tool", {"sends_begun", spool.begun, {}});
  report.count(Look, "damaged in the spool", {"damaged", spool.damaged, {}});
}

// Reports old files in the staging folder: a pass leaves this folder empty. `visible` is the path at which
// this process finds the folder: systemd gives the daemon a private /tmp.
void reportStaged(Report& report, const std::string& visible, const std::string& folder) {
  std::error_code gone;
  const auto isOld = [](const fs::directory_entry& entry) {
    struct stat info;
    return lstat(entry.path().c_str(), &info) == 0 && std::time(nullptr) - info.st_mtime >= longStaged;
  };
  const auto count = std::count_if(fs::directory_iterator(visible, gone), fs::directory_iterator(), isOld);
  report.count(Look, "left in " + folder, {"staged", count, {}});
}

bool isLow(std::uint64_t available, std::uint64_t all) { return available * 100 < all * lowRoom; }

void reportRoom(Report& report, const std::string& visible, const std::string& folder) {
  struct statvfs info;
  if (statvfs(visible.c_str(), &info) != 0) return;
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
  reportSpool(report, request.folders.root());
  const std::string visible = process.empty() ? stagingFolder : process + "/root" + stagingFolder;
  reportStaged(report, visible, stagingFolder);
  reportRoom(report, visible, stagingFolder);
  reportRoom(report, request.folders.root(), request.folders.root());
  return report.worst();
}
