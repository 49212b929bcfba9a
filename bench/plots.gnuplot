# Plots the cost of a pass from the points in FOLDER, and writes SVG files to OUT. scripts/bench runs it.
set terminal svg size 640,400 font "sans-serif,12" background "white"
set grid
set key left top
set yrange [0:*]
set style data linespoints

set output OUT."/pass-against-stored.svg"
set title "Time of a pass that files one message"
set xlabel "stored messages under Received"
set ylabel "processor time in ms"
plot FOLDER."/passWithStored" lw 2 pt 7 title "a pass"

set output OUT."/pass-against-new.svg"
set title "Time of a pass that files several messages"
set xlabel "new messages"
set ylabel "processor time in s"
plot FOLDER."/passWithNew" using 1:($2/1000) lw 2 pt 7 title "100 stored messages, at the limit", \
     FOLDER."/passIntoEmptyStore" using 1:($2/1000) lw 2 pt 5 title "no stored messages, below the limit"
