#pragma once

// The headers that most tests include.

#include "tests/Json.h"
#include "tests/LogCapture.h"
#include "tests/Rows.h"
#include "tests/TemporaryFolder.h"
