#!/bin/sh
# picture.sh INSTALLATION FILE: shows a draw from "biokbd" half way, in a terminal on an X server of its own, and
# stores a picture of it. Needs xvfb, xterm, xdotool and imagemagick.
set -eu
installation=$1
file=$2

room=$(mktemp -d)
Xvfb -displayfd 3 -screen 0 800x300x24 3>"$room/display" 2>"$room/log" &
server=$!
trap 'kill $server; rm -rf "$room"' EXIT
until [ -s "$room/display" ]; do sleep 0.1; done
DISPLAY=:$(cat "$room/display")
export DISPLAY

PS1='$ ' PATH=$installation/bin:$PATH LANG=C.UTF-8 xterm -geometry 80x7+0+0 -fa Monospace -fs 11 -bg white -fg black \
  -e sh -i &
window=$(xdotool search --sync --onlyvisible --class xterm)
sleep 1
xdotool mousemove --window "$window" 20 20 windowfocus --sync "$window"
xdotool type 'rngctl read -n 32 biokbd'
xdotool key Return
sleep 1
for key in r 7 k v m 2 q y b 8 x e o 4 h t w 9 d u i 3 f s l 6 g c n 5 p a j 1 z; do
  xdotool key "$key"
  sleep "0.0$(($(od -An -N1 -tu1 /dev/urandom) % 90 + 10))"
  xdotool key "$key"
  sleep "0.1$(($(od -An -N1 -tu1 /dev/urandom) % 90 + 10))"
done
import -window "$window" -depth 8 -colors 32 "$file"
