# The daemon reads a listing of three hundred messages completely, keeps the newest, and empties the modem.
settings receivedLimit 20
start
receive +4917099999 "one of many" --times 300
pass
records received
expect-count 20
expect 299","message"
modem
expect unread 0, read 0
