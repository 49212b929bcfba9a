# A start that fails has its line in the log and its status.
fault api gone
start
expect-exit 1
log --new
expect ERROR VELD: [ERROR] Exit: error to load settings
repair

# A limit that is no number ends the process by an exception of the JSON library.
settings sentLimit '"many"'
start
expect-exit signal 6
log --new
expect CRITICAL VELD: [FATAL] Exit: Value is not convertible to UInt.

# Without back-off timers the daemon runs, and says so once.
settings sentLimit 10
timings []
start
expect The daemon runs
log --new
expect-count 1
expect ERROR VELD: [ERROR] VELD: Error reading sms timings
stop
expect-exit 0
