# After three hundred passes the daemon has leaked no file descriptor. Five are open: the three standard streams, syslog,
# and the FIFO of the simulated clock.
start
queue +4917011111 "at the start"
receive +4917012345 "p secret #wan"
pass
status
expect 5 descriptors, 0 children
pass 298
queue +4917011111 "at the end"
pass
status
expect 5 descriptors, 0 children
modem sent
expect-count 2
