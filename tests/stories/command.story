# A command whose two parts arrive in two passes is executed when it is complete.
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

# Changed settings take effect at the next start: another permitted number, no password, one command disabled.
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
