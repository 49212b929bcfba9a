# The inbox and the outbox have a limit each. The daemon reads a listing of three hundred messages completely, keeps the
# newest, and empties the modem.
settings receivedLimit 20
settings sentLimit 2
start
receive +4917099999 "one of many" --times 300
pass
records received
expect-count 20
expect 299","message"
modem
expect unread 0, read 0
queue +4917011111 "three"
pass
queue +4917011111 "four"
pass
queue +4917011111 "five"
pass
records sent
expect-count 2
expect-not "message":"three"
