# With a full disk a message goes out all the same; one that comes in is not filed, which the log says; the daemon
# goes on when there is room.
start
queue +4917011111 "while full"
fault disk full
receive +4917099999 "not filed"
pass
modem sent
expect "text":"while full"
log --new
expect ERROR VELD: [ERROR] Error
records received
expect-not not filed
repair disk
receive +4917099999 "room again"
pass
records received
expect "message":"room again"

# A full staging folder costs what is written while it is full, and nothing later.
fault tmp full
receive +4917099999 "lost"
pass
repair tmp
receive +4917099999 "after the staging folder was full"
pass
records received
expect "message":"after the staging folder was full"
