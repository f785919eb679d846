#!/bin/sh
# Runs a follower from before there are tables over two writers: the first is killed, the second
# stops in good order. What the follower prints has to be what they did, line by line.
#
#     follow_test.sh WRITER FOLLOWER...
set -eu
writer=$1
shift
work=$(mktemp -d)
followerPid='' writerPid=''
trap 'kill -9 $followerPid $writerPid 2>/dev/null || :; wait 2>/dev/null; rm -rf "$work"' EXIT
mkfifo "$work/input"
export RLFILE=/dev/null

# await N TEXT: until the follower has printed N such lines.
await() {
    tries=0
    until [ "$(grep -c "$2" "$work/printed")" -ge "$1" ]; do
        tries=$((tries + 1))
        if [ "$tries" -gt 300 ]; then
            echo "no line $1 of '$2' in:"
            cat "$work/printed" "$work/errors"
            exit 1
        fi
        sleep 0.1
    done
}

: >"$work/printed"
"$@" "$work/tables" >>"$work/printed" 2>"$work/errors" &
followerPid=$!

"$writer" "$work/tables" <"$work/input" &
writerPid=$!
exec 3>"$work/input"
await 1 '^+ default 10.1.1.255/32 on Ethernet1, directed-broadcast'
await 4 '^+ default 10'
kill -9 "$writerPid"
wait "$writerPid" 2>/dev/null || :
exec 3>&-

# The next one finds the tables, clears the old routes, makes its own and takes them away again.
"$writer" "$work/tables" <"$work/input" &
writerPid=$!
exec 3>"$work/input"
exec 3>&-
wait "$writerPid"
writerPid=''
await 1 '^- VRF default'
kill "$followerPid"
wait "$followerPid" 2>/dev/null || :
followerPid=''
cat "$work/errors" "$work/printed"
[ ! -s "$work/errors" ]

# What came and did not go: nothing.
left=$(sed -n 's/^\([+-]\) \(default [^ ]*\).*/\2 \1/p' "$work/printed" | sort |
    awk '{ n[$2] += $3 == "+" ? 1 : -1 } END { for (prefix in n) if (n[prefix] != 0) print "left: " prefix }')
[ -z "$left" ]
