# Beyond January 2038, where 32 bits of seconds end, a message is filed under its right date.
start
date 2045-06-15
receive +4917099999 "from the future"
pass
records received
expect "guid":"20450615120
expect "timestamp":"2045/06/15 12:0
