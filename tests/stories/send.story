# The modem refuses a number. The daemon retries the message at the end of each back-off interval, and not before.
timings [30,60]
start
refuse +4917022222
queue +4917022222 "again" --retries 3
queue +4917022222 "never" --retries 0
pass
wait 30s
records failed
expect-count 2
expect "retries":2
expect "retries":0
accept +4917022222
wait 55s
records sent
expect-count 0
wait 5s
records sent
expect-count 1
expect "message":"again"
