# Each start-up failure has its line in the log and its status.
fault api gone
start
expect-exit 1
log --new
expect ERROR VELD: [ERROR] Exit: error to load settings
repair
fault api refused
start
expect-exit 1
log --new
expect Exit: error to load settings
repair
fault api code 500
start
expect-exit 1
log --new
expect Exit: error to load settings
fault api garbage
start
expect-exit 1
log --new
expect Exit: error to load settings
fault api close
start
expect-exit 1
log --new
expect Exit: error to load settings
repair api

settings enabled '"true"'
start
expect-exit 1
log --new
expect Exit: the sms enabled key has invalid value or it is missing.
settings enabled false
start
expect-exit 0
log --new
expect Exit: the sms are disabled.
settings enabled true
settings sentLimit --remove
start
expect-exit 1
log --new
expect Exit: the sms sent limit key has invalid value or it is missing.
settings sentLimit 10
settings receivedLimit --remove
start
expect-exit 1
log --new
expect Exit: the sms received limit key has invalid value or it is missing.
settings receivedLimit 10
settings smsCommands.rebootEnabled --remove
start
expect-exit 1
log --new
expect Exit: Failed to set SmsCommand config
settings smsCommands --remove
start
expect-exit 1
log --new
expect Exit: the smsCommands sub-collection is invalid or missing.

# A limit that is no number ends the process by the library's exception.
settings smsCommands '{"enabled": false, "checkinEnabled": false, "rebootEnabled": false, "whitelist": {"enabled": false, "numbers": []}, "password": {"enabled": false, "text": ""}}'
settings sentLimit '"many"'
start
expect-exit signal 6
log --new
expect CRITICAL VELD: [FATAL] Exit: Value is not convertible to UInt.
settings sentLimit 10
start
expect The daemon runs
stop
expect-exit 0
