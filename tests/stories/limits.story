# The inbox and the outbox have a limit each; the oldest goes for the newest.
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

# A limit of 0 keeps nothing: what is sent or failed is gone, and so is what comes in.
settings receivedLimit 0
settings sentLimit 0
restart
receive +4917099999 "six"
refuse +4917022222
queue +4917011111 "seven"
queue +4917022222 "eight" --retries 3
pass
records received
expect-not "message":"six"
records sent
expect-not "message":"seven"
records failed
expect-count 0
records sending
expect-count 0
