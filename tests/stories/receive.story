# Messages come in and are filed; the modem is empty afterwards.
start
receive +4917099999 "Hallo äöü€{}[]~\\ \"quoted\" ÆØÅ @$_ ΔΩ\nsecond line"
receive +4917088888 ""
pass
records received
expect-count 2
expect "message":"Hallo äöü€{}[]~\\ \"quoted\" ÆØÅ @$_ ΔΩ\nsecond line"
expect "source":"+4917099999"
expect "message":"","source":"+4917088888"
modem
expect unread 0, read 0

# What the log says cannot be forged by a text.
log
expect INFO VELD: [INFO] New sms from +4917099999, message: Hallo
expect #012second line

stop
expect-exit 0
