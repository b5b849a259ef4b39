#!/bin/sh
# symbols.sh NM LIBRARY EXPORTS: the library offers what EXPORTS lists, no more and no less. It
# reaches the devices through the plain file calls, which a simulated camera can stand in for, and
# through no others.
imports=$("$1" -D --undefined-only "$2" | sed 's/.* //; s/@.*//') || exit 1
if "$1" -D "$2" | grep -qE ' __(asan|tsan|ubsan|gcov)_'; then
    echo "skipped: sanitizers and coverage bring names of their own"
    exit 77
fi
# Weak names are inline functions of headers that an unoptimised build did not inline.
if ! "$1" -DC --defined-only "$2" | sed -n 's/^[0-9a-f]* [^VWvw] //p' | LC_ALL=C sort -u | diff "$3" -; then
    echo "the exports differ from $3: < is missing, > is not in the list"
    exit 1
fi
for wanted in open lseek read write close tcgetattr tcsetattr tcflush usleep; do
    if ! echo "$imports" | grep -qx "$wanted"; then
        echo "$wanted is not imported"
        exit 1
    fi
done
bad='p?(read|write)v?(2|64)?|(open|openat|creat|lseek|stat|access)64|openat|creat|f(open|dopen|read|seek)(64)?'
bad="$bad|__.*_chk|__open(64|at)?_2|mmap(64)?|ioctl|syscall|_ZN(K)?5QFile[A-Z0-9].*|_ZN9QSaveFile.*"
if echo "$imports" | grep -vxE 'read|write' | grep -xE "$bad"; then
    echo "are imported and must not be"
    exit 1
fi
