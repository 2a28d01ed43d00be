# Shared by the scripts of this folder; sourced, not run.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)

say() { printf '\n== %s\n' "$*"; }
fail() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
    exit 1
}

# build <preset> [<target>...]: configures and builds below build/<preset>.
build() {
    local preset=$1
    shift
    cmake -S "$root" --preset "$preset" >"$root/build/$preset.configure.log" 2>&1 || {
        cat "$root/build/$preset.configure.log" >&2
        fail "configuring the preset '$preset' failed"
    }
    cmake --build "$root/build/$preset" ${1:+--target "$@"}
}

mkdir -p "$root/build"
