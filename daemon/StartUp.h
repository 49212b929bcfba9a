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

/// Installs the handler for SIGTERM and unblocks every signal, so that a SIGTERM that was blocked until now
/// is handled. False when sigaction fails; "sigaction" is then written to standard error.
bool installTerminationHandler();

/// Checks the settings and logs the first fault. Returns the exit status of a process that must not run: 1
/// for a fault, 0 when SMS is switched off. Empty when the daemon may run. Throws the JSON library's
/// exception for settings that are no object.
std::optional<int> checkSettings(const Json::Value& settings);

/// Turns the process into a daemon and returns the checked settings. In this order: every signal gets its
/// default action and inherited file descriptors above 2 become close-on-exec; syslog; detaching from the
/// terminal; the back-off intervals; the SIGTERM handler; the settings from the local API.
///
/// Exits with status 0 in the parent and when SMS is switched off, with 1 when the settings are bad or the
/// process cannot detach. Empty when a null device cannot be opened or the handler cannot be installed:
/// `main` then returns 1.
std::optional<Json::Value> startUp();
