#!/usr/bin/env bash
# Installs into an empty prefix, moves it, and uses what is there as a host's developer would:
# install_test.sh SOURCES BUILD CXX QT_MAJOR LIBDIR
set -euo pipefail
sources=$1 build=$2 cxx=$3 qt=$4 libdir=$5
place=$(realpath "$(mktemp -d)")
trap 'rm -rf "$place"' EXIT
fail() {
    echo "install_test: $*" >&2
    exit 1
}
is() { [ "$2" = "$3" ] || fail "$1 gives '$2', not '$3'"; }

cmake --install "$build" --prefix "$place/first" >"$place/log"
mv "$place/first" "$place/moved"
prefix=$place/moved
export PKG_CONFIG_PATH=$prefix/$libdir/pkgconfig CXX=$cxx

# The command and its pages. Their options are those of --help.
is "installed command" "$("$prefix/bin/irmcore" --version)" "irmcore $(pkg-config --modversion irmcore)"
"$prefix/bin/irmcore" demo --size 160x120 >/dev/null || fail "the demo fails"
if [ -e "$build/man/stamp" ]; then
    pages=$prefix/share/man/man1
    for command in $("$prefix/bin/irmcore" --help | sed -n 's/^  \([a-z]\+\) .*/\1/p'); do
        [ -e "$pages/irmcore-$command.1" ] || fail "no page for $command"
    done
    for page in "$pages"/*.1; do
        name=$(basename "$page" .1)
        read -ra words <<<"$(tr '-' ' ' <<<"$name")"
        [ ! -x "$prefix/bin/$name" ] || words=("$name")
        shown=$(sed 's/\\-/-/g; s/\\f.//g' "$page")
        for option in $("$prefix/bin/${words[0]}" "${words[@]:1}" --help | grep -o '^ *--[a-z-]*'); do
            grep -q -- "^$option\b" <<<"$shown" || fail "$option is not in $page"
        done
    done
fi

# The library, by its names.
is "SONAME" "$(objdump -p "$prefix/$libdir/libirmcore.so" | awk '/SONAME/ {print $2}')" libirmcore.so.0

# Headers: those that <irmcore/fpga.h> needs and no others, each complete by itself. Qt's come
# without warnings.
read -ra flags <<<"-std=c++17 -fPIC $(pkg-config --cflags "Qt${qt}Core" | sed 's/-I/-isystem /g')"
flags+=(-I"$prefix/include" -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
headers=$(find "$prefix/include" -type f | sort)
echo '#include <irmcore/fpga.h>' >"$place/host.cpp"
needed=$("$cxx" "${flags[@]}" -M "$place/host.cpp") || fail "a header is not installed that others need"
needed=$(tr ' ' '\n' <<<"$needed" | grep "^$prefix" | xargs realpath | sort -u)
diff <(echo "$needed") <(echo "$headers") || fail "a header is installed that none needs"
while read -r header; do
    echo "#include \"$header\"" >"$place/alone.cpp"
    "$cxx" "${flags[@]}" -fsyntax-only "$place/alone.cpp" || fail "$header alone does not compile"
done <<<"$headers"

# Hosts: by CMake, by pkg-config, the README's, and the examples on their own.
cmake -S "$sources/tests/install" -B "$place/consumer" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >"$place/log"
cmake --build "$place/consumer" >"$place/log" || fail "$(cat "$place/log")"
is "the host built by CMake" "$("$place/consumer/consumer")" 185.1285

by_pkg_config() {
    # shellcheck disable=SC2046
    "$cxx" -std=c++17 "$1" $(pkg-config --cflags --libs irmcore) -Wl,-rpath,"$prefix/$libdir" -o "$2" ||
        fail "$1 does not compile"
}
by_pkg_config "$sources/tests/install/consumer.cpp" "$place/by-pkg-config"
is "the host built by pkg-config" "$("$place/by-pkg-config")" 185.1285
is "its Qt" "$(objdump -p "$place/by-pkg-config" | grep NEEDED | grep -o 'libQt[0-9]Core')" "libQt${qt}Core"
awk '/^```cpp$/ {on = 1; next} /^```$/ {on = 0} on' "$sources/README.md" >"$place/readme.cpp"
by_pkg_config "$place/readme.cpp" "$place/readme"

cmake -S "$sources/examples" -B "$place/examples" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" >"$place/log"
cmake --build "$place/examples" >"$place/log" || fail "$(cat "$place/log")"
if [ -e "$prefix/$libdir/irmcore/libirmcore-sim.so" ]; then
    "$prefix/bin/irmcore" sim run -- "$place/examples/reading" | grep -q '[0-9] °C' || fail "no reading"
fi
echo "installed, moved and used: $(wc -l <<<"$headers") headers, 6 hosts"
