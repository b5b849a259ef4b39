#!/bin/sh
# Each test program lists tests, and fails when a filter leaves none. EMULATOR: the words to start one with.
for program; do
    count=$($EMULATOR "$program" --gtest_list_tests | grep -c '^  ')
    if [ "$count" -eq 0 ] || $EMULATOR "$program" --gtest_filter=none >/dev/null 2>&1; then
        echo "$program: $count tests, and running none of them must fail"
        exit 1
    fi
    echo "$program: $count tests"
done
