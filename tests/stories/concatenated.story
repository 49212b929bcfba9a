# A long message in one listing, its parts in the wrong order and one of them twice, is filed as one. With a reference of
# 16 bits.
start
receive +4917099999 "of three parts" --parts 3 --16-bit --reference 4660 --order 3,1,2 --repeat 1
expect The modem has 1 message from +4917099999, in 3 parts
pass
records received
expect-count 1
expect "message":"of three parts"
expect-not part-
