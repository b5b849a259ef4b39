#!/bin/sh
# Each test program lists tests, and fails when a filter leaves none.
for program; do
    count=$("$program" --gtest_list_tests | grep -c '^  ')
    if [ "$count" -eq 0 ] || "$program" --gtest_filter=none >/dev/null 2>&1; then
        echo "$program: $count tests, and running none of them must fail"
        exit 1
    fi
    echo "$program: $count tests"
done
