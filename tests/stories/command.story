# A command in three parts is executed once, when its last part has arrived. The parts have a 16-bit reference, arrive in the
# wrong order, and one of them arrives twice.
start
receive +4917012345 "p secret #reboot" --parts 3 --16-bit --reference 4660 --order 3,2,1 --repeat 2 --hold 1
pass
requests
expect-count 0
release
pass
requests
expect-count 1
expect "path":"/api/command/sms_restart"
records received
expect-count 1
expect-not part-
