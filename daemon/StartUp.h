#pragma once

#include <json/json.h>

#include <csignal>
#include <optional>

constexpr char settingsPath[] = "/api/sms";  ///< where the local API has the settings

/// The keys of the settings that are read at the start.
namespace SettingsKey {
constexpr char enabled[] = "enabled";              ///< boolean
constexpr char sentLimit[] = "sentLimit";          ///< how many messages are kept under outbox
constexpr char receivedLimit[] = "receivedLimit";  ///< how many are kept under inbox
constexpr char smsCommands[] = "smsCommands";      ///< an object; see SMSCommandConfig
}  // namespace SettingsKey

/// Set to 1 by SIGTERM; the loop looks at it before each pass.
extern volatile std::sig_atomic_t stopRequested;

/// The SIGTERM handler: sets `stopRequested`.
void onTerminate(int signal);

/// Installs the handler, for SIGTERM only, and lets the signals in that a starter may have held back. False
/// when it cannot be installed.
bool installTerminationHandler();

/// Checks the settings and logs the first fault. The status that the process is to end with: 1 for a fault, 0
/// when SMS is switched off; none when the daemon may run. Settings that are no object throw the JSON
/// library's exception.
std::optional<int> checkSettings(const Json::Value& settings);

/// Makes the process a daemon and gives the checked settings: closes what its starter left open and undoes
/// that it ignored SIGCHLD (every command of the shell would seem to fail), syslog, detaching from the
/// terminal, the back-off intervals, the SIGTERM handler, the settings from the local API.
///
/// Ends the process itself with status 0 in the parent and when SMS is switched off, and with 1 when the
/// settings are bad or it cannot detach. Empty when the null device cannot be opened or the handler not
/// installed: `main` then returns 1.
std::optional<Json::Value> startUp();
