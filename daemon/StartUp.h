#pragma once

#include <json/json.h>

#include <csignal>
#include <optional>

constexpr char settingsPath[] = "/api/sms";  ///< the settings in the local API

/// The keys of the settings that start-up reads.
namespace SettingsKey {
constexpr char enabled[] = "enabled";              ///< boolean
constexpr char sentLimit[] = "sentLimit";          ///< number of messages to keep in the outbox
constexpr char receivedLimit[] = "receivedLimit";  ///< number of messages to keep in the inbox
constexpr char smsCommands[] = "smsCommands";      ///< an object; see SMSCommandConfig
}  // namespace SettingsKey

/// Set to 1 by SIGTERM. The loop reads it before each pass.
extern volatile std::sig_atomic_t stopRequested;

/// The SIGTERM handler: sets `stopRequested`.
void onTerminate(int signal);

/// Installs the handler for SIGTERM and unblocks every signal, so that a pending SIGTERM is handled. If
/// sigaction fails, writes "sigaction" to standard error and returns false.
bool installTerminationHandler();

/// Checks the settings and logs the first fault. Empty if the daemon may run, else its exit status: 1 for a
/// fault, 0 if SMS is switched off. Throws the JSON library's exception if the settings are not an object.
std::optional<int> checkSettings(const Json::Value& settings);

/// Turns the process into a daemon and returns the checked settings. In this order: every signal gets its
/// default disposition, and inherited file descriptors above 2 become close-on-exec; syslog; detaching from
/// the terminal; the back-off intervals; the SIGTERM handler; the settings from the local API.
///
/// Exits with status 0 in the parent and when SMS is switched off, with 1 when the settings are bad or the
/// process cannot detach. Empty if a null device cannot be opened or the handler cannot be installed; `main`
/// then returns 1.
std::optional<Json::Value> startUp();
