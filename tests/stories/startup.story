# Each start-up failure has its line in the log and its status.
fault api gone
start
expect-exit 1
log --new
expect ERROR VELD: [ERROR] Exit: error to load settings
repair

settings enabled false
start
expect-exit 0
log --new
expect Exit: the sms are disabled.

# The commands are looked at before the limits.
settings enabled true
settings sentLimit '"many"'
settings smsCommands.rebootEnabled --remove
start
expect-exit 1
log --new
expect Exit: Failed to set SmsCommand config

# A limit that is no number ends the process by the library's exception.
settings smsCommands.rebootEnabled false
start
expect-exit signal 6
log --new
expect CRITICAL VELD: [FATAL] Exit: Value is not convertible to UInt.

# Without timings for failed messages it runs, and says so once.
settings sentLimit 10
timings []
start
expect The daemon runs
log --new
expect-count 1
expect ERROR VELD: [ERROR] VELD: Error reading sms timings
stop
expect-exit 0
