#pragma once

#include <array>
#include <string_view>

#include "commands/SMSCMD.h"
#include "commands/SMSCommandConfig.h"

/// One SMS command.
struct CommandRow {
  const char* keyword;  ///< lower case, without "#"; null in the last row, which no SMS can select
  SMSCMD id;
  const char* name;               ///< the identifier, for the log
  const char* key;                ///< the key of the flag in the settings
  bool SMSCommandConfig::* flag;  ///< true if the settings permit the command
  std::size_t executor;           ///< the index of the command's executor in SMSCommand
  const char* path;               ///< the path of the request, below "/api/command/"
};

// `name` is the identifier as a string, and `key` is the name of the flag as a string.
#define COMMAND(executor, keyword, id, flag, path) \
  {keyword, id, #id, #flag, &SMSCommandConfig::flag, executor, path}

/// All commands. A new command needs an identifier, a flag and a row. The build fails if one is missing.
// clang-format off
inline constexpr std::array<CommandRow, SMSCMD_COUNT> commandRows = {{
    COMMAND( 1, "checkin",     SMSCMD_CHECKIN,        checkinEnabled,        "checkin_to_quillo_sms"),
    COMMAND( 0, "reboot",      SMSCMD_REBOOT,         rebootEnabled,         "sms_restart"),
    COMMAND( 2, "rm",          SMSCMD_RM,             rmEnabled,             "set_rm_through_sms"),
    COMMAND( 3, "setcellular", SMSCMD_SETCELLULAR,    setCellularEnabled,    "set_cellular_through_sms"),
    COMMAND( 4, "apn",         SMSCMD_APN,            apnEnabled,            "send_apn_through_sms"),
    COMMAND( 5, "cellular",    SMSCMD_CELLULARSTATUS, cellularStatusEnabled, "send_cellularstatus_sms"),
    COMMAND( 6, "radio",       SMSCMD_RADIO,          radioEnabled,          "send_radiostatus_sms"),
    COMMAND( 7, "ethernet",    SMSCMD_ETHERNET,       ethernetEnabled,       "send_ethernetstatus_sms"),
    COMMAND( 8, "wan",         SMSCMD_WAN,            wanStatusEnabled,      "send_wanstatus_sms"),
    COMMAND( 9, "wifi",        SMSCMD_WIFI,           wifiEnabled,           "send_wifistatus_sms"),
    COMMAND(10, "ping",        SMSCMD_PING,           pingEnabled,           "do_ping_through_sms"),
    COMMAND(11, "serial",      SMSCMD_SERIAL,         serialEnabled,         "send_serialstatus_sms"),
    COMMAND(12, "geoposition", SMSCMD_GEOPOSITION,    geopositionEnabled,    "send_geoposition_sms"),
    COMMAND(15, "wanips",      SMSCMD_WANIPS,         wanIpsEnabled,         "send_wanips_sms"),
    COMMAND(13, "lnsrestart",  SMSCMD_LNSRESTART,     lnsRestartEnabled,     "lns_restart_sms"),
    {nullptr, SMSCMD_UNKNOWN, "SMSCMD_UNKNOWN", nullptr, nullptr, 14, "sms_send"},
}};
// clang-format on
#undef COMMAND

/// Returns true if each identifier and each executor has exactly one row, and if no two rows share a keyword,
/// a flag or a path.
constexpr bool isWhole(const decltype(commandRows)& rows) {
  for (const CommandRow& row : rows) {
    if (row.path == nullptr || row.executor >= rows.size()) return false;
    if ((row.keyword == nullptr) != (row.id == SMSCMD_UNKNOWN)) return false;
    for (const CommandRow* other = rows.data(); other != &row; ++other)
      if (row.id == other->id || row.executor == other->executor || row.flag == other->flag ||
          std::string_view(row.path) == other->path ||
          (row.keyword != nullptr && std::string_view(row.keyword) == other->keyword))
        return false;
  }
  return true;
}
static_assert(isWhole(commandRows), "commandRows: a row is missing, or two rows share a value");
