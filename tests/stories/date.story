# After January 2038, when 32-bit times overflow, a message is filed with the correct date.
start
date 2045-06-15
receive +4917099999 "from the future"
pass
records received
expect "guid":"20450615120
expect "timestamp":"2045/06/15 12:0
