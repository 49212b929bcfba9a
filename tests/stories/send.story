# The modem refuses a number: the message is filed as failed, and sent again when the back-off interval has passed.
timings [30,60]
start
refuse +4917022222
queue +4917022222 "again" --retries 3
queue +4917022222 "never" --retries 0
pass
records failed
expect-count 2
expect "retries":3,"status":"failed"
wait 25s
records failed
expect "retries":3
wait 5s
records failed
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
records failed
expect-count 1
expect "message":"never"
