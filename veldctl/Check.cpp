#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "daemon/SmsTimings.h"
#include "provider/SmsUtilsProvider.h"
#include "storage/MessageStatus.h"
#include "support/Text.h"
#include "veldctl/Api.h"
#include "veldctl/CapturedLog.h"
#include "veldctl/Commands.h"
#include "veldctl/ModemStatus.h"
#include "veldctl/Report.h"
#include "veldctl/SettingsCheck.h"
#include "veldctl/Times.h"

namespace {
// readSmsTimings() logs a warning if it cuts a list of timers that is too long.
void reportTimings(Report& report) {
  const auto log = capturedLog([] { readSmsTimings(); });
  for (const std::string& line : log) report.add(Look, "the daemon logs: " + line);
  if (smsTimings.empty())
    return report.add(Look, "there are no back-off timers: a failed message is never sent again");
  std::string spans;
  for (const std::uint32_t seconds : smsTimings) spans += (spans.empty() ? "" : ", ") + Times::span(seconds);
  report.add(Well, "a failed message is sent again after " + spans);
}

void reportPrograms(Report& report) {
  const char* const path = std::getenv("PATH");
  const auto folders = Orvel::Text::split(path != nullptr ? path : "", ":", 1000);
  for (const std::string tool : {"sms", "bash"}) {
    const auto has = [&](const std::string& folder) {
      return access(std::string(folder).append("/").append(tool).c_str(), X_OK) == 0;
    };
    if (std::none_of(folders.begin(), folders.end(), has))
      report.add(Ill, "there is no program " + tool + " in the PATH");
  }
}

// Reports a missing file, or a file whose mode has one of the `forbidden` bits.
void reportMode(Report& report, const std::string& path, mode_t forbidden, Verdict verdict,
                const char* danger) {
  struct stat info;
  if (stat(path.c_str(), &info) != 0)
    report.add(Ill, path + ": " + std::strerror(errno));
  else if ((info.st_mode & forbidden) != 0)
    report.add(verdict, path + " is open to every user: " + danger);
}

// The send log holds the output of the tool. The first send creates this file.
void reportSendLog(Report& report) {
  if (access(sendLog, F_OK) != 0 && errno == ENOENT)
    report.add(Well, std::string("there is no ") + sendLog + " yet: no message was sent");
  else
    reportMode(report, sendLog, S_IROTH | S_IWOTH, Look, "any user can read what was sent");
}
}  // namespace

int check(const Request& request) {
  Report report(request.isJson() ? Report::Form::Json : Report::Form::Text);
  const ApiAnswer api = askForSettings();
  if (api.fault.empty())
    reportSettings(report, api.settings);
  else
    report.add(Ill, api.fault);
  reportTimings(report);
  reportPrograms(report);
  if (ModemStatus::isKnown()) ModemStatus::check(report);
  reportMode(report, request.folders.root(), S_IRWXO, Ill, "any user can run commands as the daemon");
  for (const int status : MessageStatus::all) reportMode(report, request.folders.path(status), 0, Ill, "");
  reportSendLog(report);
  return report.worst();
}
