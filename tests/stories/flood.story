# A listing of a thousand messages is taken whole, the newest are kept, and the modem is empty.
settings receivedLimit 20
start
receive +4917099999 "one of many" --times 1000
pass
records received
expect-count 20
expect 999","message"
modem
expect unread 0, read 0
