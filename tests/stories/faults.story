# If the tool fails to delete the messages, the next pass receives them again.
start
receive +4917099999 "twice"
fault tool delete fail 1
pass 2
records received
expect-count 2

# The daemon recovers when the tool is killed during a send, when it prints nothing, and when it is missing.
queue +4917011111 "killed" --retries 1
fault tool send kill 1
pass
wait 30s
records sent
expect-count 1
receive +4917099999 "later"
fault tool read silent 1
pass
records received
expect-count 2
pass
records received
expect-count 3
fault tool gone
receive +4917099999 "much later"
pass 2
repair tool
pass
records received
expect-count 4

# Syslog stops and restarts.
fault syslog gone
receive +4917099999 "unseen"
pass
repair syslog
log --new
receive +4917099999 "seen"
pass
log --new
expect message: seen
expect-not unseen
stop
expect-exit 0

# The daemon starts although syslog does not run.
fault syslog gone
start
receive +4917099999 "not logged"
pass
records received
expect "message":"not logged"
