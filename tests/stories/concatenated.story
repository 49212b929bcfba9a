# A concatenated message in one listing, with its parts in the wrong order, is filed as one record.
start
receive +4917099999 "0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 0123456789." --order 2,1
expect The modem has 1 message from +4917099999, in 2 parts
pass
records received
expect-count 1
expect "message":"0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 0123456789 0123456789."
expect-not part-

# Parts that arrive in two passes wait for each other, with a 16-bit reference and a repeated part.
receive +4917088888 "from two passes" --parts 3 --16-bit --reference 4660 --hold 2 --repeat 1
expect held back
pass
records received
expect-count 2
expect "part-count":3,"part-id":4660
expect "parts":["from ",null,"asses"]
release
pass
records received
expect-count 2
expect "message":"from two passes"
expect-not parts
