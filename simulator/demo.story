# The daemon starts and reads its settings from the local API. It retries a failed message after 30, 60 and 300 s.
timings [30,60,300]
start
requests --all
expect "path":"/api/sms"

# 1. The modem receives a message. The next pass of the daemon moves the message from the modem into a file.
receive +4917099999 "Hello gateway, it costs 5 € {ok}"
modem
expect unread 1
pass
records received
expect "message":"Hello gateway, it costs 5 € {ok}"
modem
expect unread 0, read 0
log --new

# 2. The two parts of a long message arrive at different times. The daemon joins the parts into one message.
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

# 3. A permitted number sends a command with the right password. The daemon posts the command to the local API.
receive +4917012345 "p secret #ping 8.8.8.8 3"
pass
requests
expect-count 1
expect {"body":{"args":["8.8.8.8","3"],"recipients":["+4917012345"]},"path":"/api/command/do_ping_through_sms"}
records received
expect "isSMSCommand":true
log --new

# 4. Another number sends the same command. The daemon files the message, but posts nothing to the local API.
receive +4917099999 "p secret #ping 8.8.8.8 3"
pass
requests
expect-count 1
log --new
expect phone number not in white list

# 5. Another program queues a message. The daemon sends the message.
queue +4917011111 "Alarm at the cabinet"
pass
records sent
expect "recipient":"+4917011111"
log --new

# 6. The modem refuses to send to a number. The daemon files the message as failed, and sends it again after 30 s.
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

# 7. The operator lists the messages and checks the daemon with veldctl.
veldctl list
expect sent      -     to   +4917022222  Second alarm
veldctl status
expect well  the daemon runs since

# 8. The daemon receives SIGTERM and ends with status 0.
kill TERM
expect-exit 0
