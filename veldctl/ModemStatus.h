#pragma once

#include "veldctl/Report.h"

/// Where veld's own tool drives the modem, and not a gateway's, that tool can say how the modem is.
namespace ModemStatus {

/// Whether the tool here is veld's own.
bool isKnown();

/// Asks the tool, ten seconds at most, and reports the modem, the SIM card, the network and the room for
/// messages.
void report(Report& report);

/// Asks the tool, and reports whether it answers.
void check(Report& report);

}  // namespace ModemStatus
