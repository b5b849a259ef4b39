#!/bin/sh
# Runs hosts on the simulated camera where `irmcore sim run` cannot start them, their processor being
# another one: preload_test.sh COMMAND OBJECT PLAINHOST LIBRARYHOST READING LIVE RANGES
# EMULATOR: the words to start a program with.
set -eu
command=$1 object=$2 plain=$3 library=$4 reading=$5 live=$6 ranges=$7
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
$EMULATOR "$command" sim camera "$place/camera"
cd "$place/camera"

# on PLAN HOST WORDS...: what the host prints on the camera of these lines. A plan names its process,
# which stays the same when a shell executes a host.
on() {
    printf 'irmsim-plan 1\n%b\nsurroundings 0.95 5 0.6 25 25\nend\n' "$1" >../plan
    shift
    status=0
    env PRELOAD="$object" sh -c 'IRMSIM_PLAN=$$:9 LD_PRELOAD=$PRELOAD exec '"$EMULATOR"' "$@"' sh "$@" \
        >../output 2>&1 9<../plan || status=$?
}
# prints PATTERN: the host ended well, and printed a line like that.
prints() {
    [ "$status" -eq 0 ] && grep -qE -- "$1" ../output && return
    cat ../output
    echo "exit code $status; no line has '$1'" >&2
    exit 1
}

bench='scene bench 384 288 0 0'
on "$bench" "$plain" r 0x1c p 5 c 0
prints '^6784$'
prints '^5$'
prints '^[0-9]+ (irmcore-plainho|qemu)'
on "$bench" "$plain" q 0
prints '^7fa50077025307215a$'
for pty in 0 1; do
    on "scene uniform 384 288 37 0\npty $pty" "$library"
    prints '^OK 3(6\.[789]|7\.[012])'
done
# Noise is the same on every processor, bit by bit.
on "$bench\nnoise 3 1" "$plain" f 70
prints '^d123d4ca6bac718f$'
on "$bench" "$reading"
prints '^(21.[89]|22.[01])[0-9] °C$'
on "$bench" "$live"
prints '^ 19  hottest .* OK +(139.[89]|140.[01])'
on "$bench" "$ranges"
prints '^range 0, lens 0: OK (21.[89]|22.[01])'
