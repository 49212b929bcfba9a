# A command in two parts that come in two passes is executed when it is whole.
start
receive +4917012345 "p secret #reboot" --parts 2 --hold 2
pass
requests
expect-count 0
release
pass
requests
expect-count 1
expect "path":"/api/command/sms_restart"

# A stranger, a wrong password, no password and no command are filed and go nowhere.
receive +4917099999 "p secret #ping 8.8.8.8 3"
receive +4917012345 "p wrong #ping 8.8.8.8 3"
receive +4917012345 "#ping 8.8.8.8 3"
receive +4917012345 "p secret #format"
log --new
pass
requests
expect-count 1
records received
expect-count 5
log --new
expect phone number not in white list
expect password did not match
expect Invalid command string [format]

# Settings are read at the next start: a stranger may, the password is off, one command is switched off.
whitelist +4917099999
password off
settings smsCommands.radioEnabled false
restart
receive +4917099999 "#wanips"
receive +4917099999 "#radio"
receive +4917012345 "#wanips"
pass
requests
expect-count 2
expect "path":"/api/command/send_wanips_sms"
expect-not radio
settings smsCommands.enabled false
restart
receive +4917099999 "#wan"
pass
requests
expect-count 2
records received
expect "message":"#wan"
expect-not "isSMSCommand":true,"message":"#wan",
log --new
expect WARNING VELD: [WARNING] SMS commands not enabled
