# The daemon starts. It asks the local API for its settings and reads its back-off intervals: 30, 60 and 300 s.
timings [30,60,300]
start
requests --all
expect "path":"/api/sms"

# 1. The modem receives a message and holds it until the daemon's next pass files it.
receive +4917099999 "Hello gateway, it costs 5 € {ok}"
modem
expect unread 1
pass
records received
expect "message":"Hello gateway, it costs 5 € {ok}"
modem
expect unread 0, read 0
log --new

# 2. The two parts of a message arrive in two passes, and the daemon files them as one message.
receive +4917099999 "A long text that the network cuts in two." --parts 2 --hold 2
pass
records received
expect "parts":["A long
release
pass
records received
expect "message":"A long text that the network cuts in two."
expect-not "parts"
log --new

# 3. The daemon posts a command with the password from a permitted number to the local API.
receive +4917012345 "p secret #ping 8.8.8.8 3"
pass
requests
expect-count 1
expect {"body":{"args":["8.8.8.8","3"],"recipients":["+4917012345"]},"path":"/api/command/do_ping_through_sms"}
records received
expect "isSMSCommand":true
log --new

# 4. The daemon files the same command from a stranger and posts nothing.
receive +4917099999 "p secret #ping 8.8.8.8 3"
pass
requests
expect-count 1
log --new
expect phone number not in white list

# 5. The daemon sends a message that another program queued.
queue +4917011111 "Alarm at the cabinet"
pass
records sent
expect "recipient":"+4917011111"
log --new

# 6. The modem refuses a number. The daemon files the message as failed, and retries after 30 s.
refuse +4917022222
queue +4917022222 "Second alarm" --retries 3
pass
records failed
expect "retries":3,"status":"failed"
log --new
expect Error to send SMS
accept +4917022222
wait 35s
records failed
expect-count 0
records sent
expect "message":"Second alarm"
log --new

# 7. The operator lists the messages and asks for the status.
veldctl list
expect sent      -     to   +4917022222  Second alarm
veldctl status
expect well  the daemon runs since

# 8. The daemon ends on SIGTERM with status 0.
kill TERM
expect-exit 0
