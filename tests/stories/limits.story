# The inbox and the outbox have a limit each. At the limit a new message displaces the oldest one.
settings receivedLimit 1
settings sentLimit 2
start
receive +4917099999 "one"
pass
receive +4917099999 "two"
pass
records received
expect-count 1
expect "message":"two"
queue +4917011111 "three"
pass
queue +4917011111 "four"
pass
queue +4917011111 "five"
pass
records sent
expect-count 2
expect-not "message":"three"
