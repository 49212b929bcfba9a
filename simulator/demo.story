# The daemon starts: it asks the local API for its settings and reads its back-off intervals, 30, 60 and 300 s.
timings [30,60,300]
start
requests --all
expect "path":"/api/sms"

# 1. A message comes in over the air. The modem holds it until the daemon's next pass fetches and files it.
receive +4917099999 "Hello gateway, it costs 5 € {ok}"
modem
expect unread 1
pass
records received
expect "message":"Hello gateway, it costs 5 € {ok}"
modem
expect unread 0, read 0
log --new

# 2. A message in two parts comes in over two passes, and is filed as one.
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

# 3. A command from a permitted number, with the password, reaches the local API as its request.
receive +4917012345 "p secret #ping 8.8.8.8 3"
pass
requests
expect-count 1
expect {"body":{"args":["8.8.8.8","3"],"recipients":["+4917012345"]},"path":"/api/command/do_ping_through_sms"}
records received
expect "isSMSCommand":true
log --new

# 4. The same command from a stranger is filed, and goes nowhere.
receive +4917099999 "p secret #ping 8.8.8.8 3"
pass
requests
expect-count 1
log --new
expect phone number not in white list

# 5. A message that another program queues goes out.
queue +4917011111 "Alarm at the cabinet"
pass
records sent
expect "recipient":"+4917011111"
modem sent
expect {"recipient":"+4917011111","text":"Alarm at the cabinet"}
log --new

# 6. The modem refuses a number: the message is filed as failed, and sent again when its 30 s have passed.
refuse +4917022222
queue +4917022222 "Second alarm" --retries 3
pass
records failed
expect "retries":3,"status":"failed"
log --new
expect Error to send SMS
accept +4917022222
wait 25s
records failed
expect-count 1
wait 10s
records failed
expect-count 0
records sent
expect "message":"Second alarm"
log --new

# 7. What the operator sees: the messages, and whether all is well.
veldctl list
expect sent      -     to   +4917022222  Second alarm
veldctl status
expect well  the daemon runs since

# 8. SIGTERM ends the daemon with status 0.
kill TERM
expect-exit 0
