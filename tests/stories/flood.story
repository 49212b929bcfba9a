# A listing of three hundred messages is taken whole, the newest are kept, and the modem is empty.
settings receivedLimit 20
start
receive +4917099999 "one of many" --times 300
pass
records received
expect-count 20
expect 299","message"
modem
expect unread 0, read 0
