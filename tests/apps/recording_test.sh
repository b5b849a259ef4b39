# The commands record and replay: COMMAND, a host, and another one.
command=$1 live=$2 reading=$3
directory=$(mktemp -d) || exit 1
trap 'rm -r "$directory"' EXIT
cd "$directory" || exit 1

fail() { echo "$1" >&2; cat err >&2; exit 1; }
# Runs the words after the first, whose exit code is to be the first.
run() {
    wanted=$1; shift
    "$command" "$@" >out 2>err
    code=$?
    [ $code -eq "$wanted" ] || fail "$*: exit code $code, not $wanted"
}
said() { grep -q "$1" err || fail "not said: $1"; }

run 0 record a.irmrec --size 160x120 --noise 2AD --warm-up 26.5:35 -- "$live" 5
said 'a.irmrec: 0 frames, [0-9]* calls, [0-9.]* s, [0-9]* kB'
mv out then
run 0 replay a.irmrec -- "$live" 5
cmp then out || fail "a replay reads otherwise"
run 1 replay a.irmrec -- "$reading"; said 'the recording does not tell register 0x00F0 (version): EIO'
run 0 replay --loop a.irmrec -- "$live" 12
run 0 sim camera other; echo >>other/Parameter/Setting
run 0 replay a.irmrec --camera other -- true; said 'not the one of the recording'
run 7 record b.irmrec -- sh -c 'exit 7'
run 7 replay b.irmrec -- sh -c 'exit 7'
run 127 record c.irmrec -- no-such-host
[ ! -e c.irmrec ] || fail "a recording of nothing"
head -c 3000 a.irmrec >cut
run 0 replay cut -- true; said 'cut short: it ends after'
head -c 30 a.irmrec >cut
run 2 replay cut -- true; said "'cut' cannot be replayed: its head is not complete"
run 2 replay then -- true; said "'then' cannot be replayed: it is not a recording"
run 2 replay none -- true; said "'none' cannot be replayed: No such file"
run 2 record none/a -- true; said "'none/a' cannot be written"
run 2 record /dev/full -- true; said "'/dev/full' is not complete: No space left"
# Behind -- is the host: it is not taken for the file, and not written over.
printf '#!/bin/sh\nexit 0\n' >wrapper; chmod +x wrapper
run 3 record -- ./wrapper true
run 3 replay -- a.irmrec true
[ "$(head -n 1 wrapper)" = '#!/bin/sh' ] || fail "the host has been written over"
(ulimit -n 100; run 0 replay a.irmrec -- true) || exit 1
# What a recorder that is killed has heard is in the file.
"$command" record killed.irmrec --camera other -- \
    sh -c 'exec 3<>/dev/DM365-FPGA; echo $$ >opened; exec sleep 60' 2>err &
until "$command" replay killed.irmrec -- true 2>&1 | grep -q 'after [1-9]'; do sleep 0.1; done
kill -9 $!; wait $! 2>/dev/null; kill "$(cat other/opened)"
run 0 replay killed.irmrec -- true; said 'cut short: it ends after [1-9]'
run 3 record a.irmrec
run 3 replay a.irmrec
