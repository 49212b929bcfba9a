#pragma once

#include "faults/Trial.h"

/// What happens to a gateway now and then: kills, full disks, a store that cannot be written, a clock that is
/// set back. Prints what is not as it should be, and for each message a line "TAB ACCIDENT TAB KIND"; true
/// when nothing is wrong.
bool tryAccidents(const Trial::Programs& programs);
