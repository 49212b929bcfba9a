# A command in two parts, received in two passes, is executed once it is complete.
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

# Changed settings take effect at the next start: another number is permitted, the password is off, one command is off.
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
