# One command of veldctl answers each question of an operator.
whitelist +4917012345 "0170 12345" ""
timings [30,60]
start
veldctl status
expect well  the daemon runs since
expect-not status

# Why did my command not run?
password off
settings smsCommands.whitelist.enabled false
veldctl check
expect ILL   anyone may send #reboot: whitelist and password are off
expect well  a failed message is sent again after 30 s, 60 s
settings smsCommands.whitelist.enabled true
settings receivedLimit many
settings sentLimit --remove
veldctl check
expect look  receivedLimit has the wrong type
expect look  sentLimit is missing
expect look  no sender can match "0170 12345" in the whitelist
expect look  no sender can match "" in the whitelist
expect ILL   the daemon logs: [ERROR] Exit: the sms sent limit key has invalid value or it is missing.
expect ILL   the daemon does not start with these settings
settings receivedLimit 100
settings sentLimit 1
restart
veldctl check
expect well  the daemon starts with these settings
expect-not look  sentLimit

timings [10,20,30,40,50,60,70,80,90,100,110,120,130,140,150,160,170,180,190,200,210,220,230,240,250,260,270,280,290,300,310,320,330,3600]
veldctl check
expect look  the daemon logs: [WARNING] VELD: The value of timings-sms is too long.
timings [30,60]

# Send a message now. List the last messages.
veldctl send +4917011111 "The tank is full"
pass
receive +4917099999 "hello there"
receive +4917088888 "in two halves" --parts 2 --hold 2
pass
veldctl list received -n 1 --json
expect-count 1
expect "parts":["in two 
veldctl status
expect well  the last message was received at 20
expect well  the last message was sent at 20
expect well  1 received with missing parts

# Why is this message stuck?
refuse +4917022222
veldctl send +4917022222 "Pump ёж {€}" --retries 0
expect veldctl: not in the GSM alphabet: ёж
pass
veldctl status
expect look  1 failed permanently: 20
expect status 1
fault tool send hang
veldctl send +4917033333 "first"
pass --no-wait
await tool
veldctl status
expect well  the daemon has waited since
expect sms --verbose send -f /tmp/sms/sms-tmp +4917033333
veldctl send +4917033333 "second"
expect veldctl: "sentLimit" is reached: the daemon may discard 1 of the waiting messages
repair tool
await pass

# The API does not answer a command. veldctl shows that the daemon waits, and since when a received message waits.
fault api silent
receive +4917012345 "p secret #ping 8.8.8.8"
pass --no-wait
await request
veldctl status
expect well  the daemon waits for the local API
expect well  1 received but not filed yet; the first arrived at 20
expect ILL   the local API does not answer: timeout after 3 s
repair api
await pass
fault api garbage
veldctl check
expect ILL   the answer of the local API is not a JSON object with a "code"
fault api code 500
veldctl check
expect ILL   the local API answers with code 500
settings sentLimit 0
repair api
veldctl status
expect look  "sentLimit" is 0: no message is kept
settings sentLimit 1
