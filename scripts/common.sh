# Shared by ./run and ./test. Sourced, not run.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export CCACHE_DIR="${CCACHE_DIR:-$root/build/ccache}"
export CCACHE_SLOPPINESS=pch_defines,time_macros  # for the precompiled header of the tests

say() { printf '\n== %s\n' "$*"; }

# install_packages KIND...: installs what the package list names for these kinds and is missing.
install_packages() {
    local missing=() kind name
    while read -r kind name _; do
        [[ " $* " == *" $kind "* ]] || continue
        [[ $(dpkg-query -W -f '${db:Status-Status}' "$name" 2>/dev/null) == installed ]] ||
            missing+=("$name")
    done < <(grep -v '^#' "$root/packaging/debian-packages" | grep .)
    ((${#missing[@]})) || return 0
    say "Installing ${missing[*]}"
    local as_root=()
    ((EUID == 0)) || as_root=(sudo)
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -q >/dev/null
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install -y -q --no-install-recommends "${missing[@]}" >/dev/null
}

# configure PRESET: makes build/PRESET ready to be built.
configure() {
    (cd "$root" && cmake --preset "$1" --log-level=WARNING >/dev/null)
}

# build PRESET [TARGET...]: configures and builds below build/PRESET.
build() {
    local preset=$1
    shift
    say "Building ($preset)"
    configure "$preset"
    (cd "$root" && cmake --build --preset "$preset" ${1:+--target "$@"})
}
