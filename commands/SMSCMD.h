#pragma once

/// The identifiers of the SMS commands.
enum SMSCMD : int {
  SMSCMD_UNKNOWN = 0,  ///< no command
  SMSCMD_CHECKIN = 1,
  SMSCMD_REBOOT = 2,
  SMSCMD_RM = 3,
  SMSCMD_SETCELLULAR = 4,
  SMSCMD_APN = 5,
  SMSCMD_CELLULARSTATUS = 6,
  SMSCMD_RADIO = 7,
  SMSCMD_ETHERNET = 8,
  SMSCMD_WAN = 9,
  SMSCMD_WIFI = 10,
  SMSCMD_PING = 11,
  SMSCMD_SERIAL = 12,
  SMSCMD_GEOPOSITION = 13,
  SMSCMD_LNSRESTART = 14,
  SMSCMD_WANIPS = 15,
  SMSCMD_COUNT  ///< the number of identifiers
};
