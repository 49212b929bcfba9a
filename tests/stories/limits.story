# The daemon reads a listing of three hundred messages completely, empties the modem, and keeps the newest messages up to the
# limit of the inbox.
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
