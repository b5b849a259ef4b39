#!/bin/sh
# Runs an example, unchanged, on the simulated camera: example_test.sh COMMAND EXAMPLE PATTERN
# The pattern is of a line that it has to print.
set -eu
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
cd "$place"
status=0
"$1" sim run -- "$2" >output || status=$?
if [ "$status" -ne 0 ] || ! grep -qE -- "$3" output; then
    cat output
    echo "exit code $status; no line has '$3'" >&2
    exit 1
fi
