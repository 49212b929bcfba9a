# SIGTERM ends the sleep at once.
start
kill TERM
expect-exit 0

# If SIGTERM arrives during a pass, the daemon ends after the pass. Here the daemon sends a message.
start
queue +4917011111 "last words"
fault tool send hang
pass --no-wait
await tool
kill TERM
repair tool
await exit
expect-exit 0
records sent
expect-count 1
records failed
expect-count 0

# Here the daemon posts a command.
start
receive +4917012345 "p secret #checkin"
fault api silent
pass --no-wait
await request
kill TERM
repair api
await exit
expect-exit 0
records received
expect "isSMSCommand":true

# If SIGTERM arrives during start-up, the daemon ends without a pass.
receive +4917099999 "third"
fault api silent
start --no-wait
await request
kill TERM
repair api
expect-exit 0
modem
expect unread 1
