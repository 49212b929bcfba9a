# A failed start writes a log line and exits with a status.
fault api gone
start
expect-exit 1
log --new
expect ERROR VELD: [ERROR] Exit: error to load settings
repair

# A limit that is not a number ends the process with an exception of the JSON library.
settings sentLimit '"many"'
start
expect-exit signal 6
log --new
expect CRITICAL VELD: [FATAL] Exit: Value is not convertible to UInt.

# Without back-off timers the daemon runs, and logs their absence once.
settings sentLimit 10
timings []
start
expect The daemon runs
log --new
expect-count 1
expect ERROR VELD: [ERROR] VELD: Error reading sms timings
stop
expect-exit 0
