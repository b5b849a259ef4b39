# Shared by the scripts: sourced, not run.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

# What building and testing takes on Debian 12.
build_packages=(g++ cmake ninja-build qt6-base-dev qt6-charts-dev qt6-svg-dev libqt6opengl6-dev
    fonts-dejavu-core)
test_packages=(libgtest-dev python3 help2man pkg-config)
clang_packages=(clang libclang-rt-14-dev) # for the preset of that name

# Says on standard error how long the script has run.
took() { echo "$(basename "$0"): ${SECONDS} s" >&2; }

# Installs those of the named Debian packages that are missing.
need() {
    local missing=() package
    for package in "$@"; do
        [ "$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null)" = installed ] ||
            missing+=("$package")
    done
    [ ${#missing[@]} -eq 0 ] && return
    local as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        command -v sudo >/dev/null || {
            echo "missing: ${missing[*]}; install them, or run this as root" >&2
            exit 2
        }
        as_root=(sudo)
    fi
    echo "installing ${missing[*]}" >&2
    "${as_root[@]}" apt-get update -q >&2
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -q -y --no-install-recommends "${missing[@]}" >&2
}

# Configures a preset and builds it, or only the targets named after it. Everything it says goes to
# standard error. Two at once would spoil the build directory: the second waits.
build() {
    local preset=$1
    shift
    mkdir -p "$root/build"
    (
        flock 9
        cd "$root"
        cmake --preset "$preset" && cmake --build --preset "$preset" ${1:+--target "$@"}
    ) >&2 9>"$root/build/$preset.lock"
}
