#!/bin/sh
# Runs a follower from before there are tables over two writers: the first is killed, the second
# stops in good order. What the follower prints has to be what they did.
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

# Starts a writer, which runs until descriptor 3 is closed.
startWriter() {
    "$writer" "$work/tables" <"$work/input" 3>&- &
    writerPid=$!
    exec 3>"$work/input"
}

# await COMMAND...: until it succeeds.
await() {
    tries=0
    until "$@"; do
        tries=$((tries + 1))
        if [ "$tries" -gt 300 ]; then
            echo "waited for: $*"
            cat "$work/errors" "$work/printed"
            exit 1
        fi
        sleep 0.1
    done
}

hasFourRoutes() { [ "$(grep -c '^+ default 10' "$work/printed")" -eq 4 ]; }

# What came has gone. A VRF may go before its last routes, whose lines lack its name then.
isEmptied() {
    grep -q '^- VRF default' "$work/printed" &&
        awk '$1 == "+" && $2 != "VRF" { ++n[$3] }
             $1 == "-" && $2 != "VRF" { --n[$3] }
             END { for (prefix in n) if (n[prefix] != 0) exit 1 }' "$work/printed"
}

: >"$work/printed"
"$@" "$work/tables" >>"$work/printed" 2>"$work/errors" &
followerPid=$!

startWriter
await hasFourRoutes
kill -9 "$writerPid"
wait "$writerPid" 2>/dev/null || :
exec 3>&-

# The next one finds the tables, clears the old routes, makes its own and takes them away again.
startWriter
exec 3>&-
wait "$writerPid"
writerPid=''
await isEmptied

cat "$work/errors" "$work/printed"
[ ! -s "$work/errors" ]
grep -q '^+ default 10.1.1.255/32 on Ethernet1, directed-broadcast' "$work/printed"
! grep '^[+*-] [^V][^ ]* [^ ]*$' "$work/printed" # each route was followed to its interface
