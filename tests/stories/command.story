# A command from a permitted number reaches the API as its request; the message is marked.
start
receive +4917012345 "p secret #ping 8.8.8.8 3"
pass
requests
expect-count 1
expect {"body":{"args":["8.8.8.8","3"],"recipients":["+4917012345"]},"path":"/api/command/do_ping_through_sms"}
records received
expect "isSMSCommand":true

# A command in two parts that come in two passes is executed when it is whole.
receive +4917012345 "p secret #reboot" --parts 2 --hold 2
pass
requests
expect-count 1
release
pass
requests
expect-count 2
expect "path":"/api/command/sms_restart"

# A stranger, a wrong password, no password and no command are filed and go nowhere.
receive +4917099999 "p secret #ping 8.8.8.8 3"
receive +4917012345 "p wrong #ping 8.8.8.8 3"
receive +4917012345 "#ping 8.8.8.8 3"
receive +4917012345 "p secret #format"
log --new
pass
requests
expect-count 2
records received
expect-count 6
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
expect-count 3
expect "path":"/api/command/send_wanips_sms"
expect-not radio
settings smsCommands.enabled false
restart
receive +4917099999 "#wanips"
pass
requests
expect-count 3
log --new
expect WARNING VELD: [WARNING] SMS commands not enabled
