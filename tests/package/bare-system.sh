# A Debian 12 of its own with a desktop and without Qt, on which a test may install what it likes.
# Sourced, not run, by root.
#
# Expects $root, and $folder for what is kept: the system itself, and packages that were downloaded.

system=$folder/system
owner_home=/home/tester
here=/opt/brimwatch-test
base_packages=(at-spi2-core ca-certificates dbus dbus-bin dbus-daemon fonts-dejavu-core
    fonts-noto-cjk gir1.2-atspi-2.0 libglib2.0-bin libx11-xcb1 man-db openbox procps python3-pyatspi
    xdotool xfce4-panel xfconf xvfb)

step() { printf '  %s\n' "$*"; }
fail() {
    echo "$*"
    exit 1
}

# make_system: with the user `tester`, and what a test on its desktop needs below $here.
make_system() {
    local packages base
    packages=$(IFS=, && echo "${base_packages[*]}")
    base=$folder/base-$(sha256sum <<<"$packages" | cut -c 1-12).tar
    mkdir -p "$folder/archives"
    [[ -s $base ]] || {
        mmdebstrap --quiet --variant=minbase --include="$packages" bookworm "${base%.tar}.part.tar"
        mv "${base%.tar}.part.tar" "$base"
    }
    rm -rf --one-file-system "$system"
    mkdir -p "$system"
    tar -x --numeric-owner -C "$system" -f "$base"
    cp /etc/resolv.conf "$system/etc/resolv.conf"
    in_system useradd --uid 1000 --create-home --shell /bin/bash tester
    mkdir -p "$system$here/tests"
    (cd "$root" && cp -R --parents scripts tests/panels tests/package tests/data "$system$here")
}

# in_system COMMAND...: as root. What it leaves running ends with it.
in_system() {
    # shellcheck disable=SC2016
    unshare --mount --pid --fork --kill-child bash -c '
        mount -t proc proc "$0/proc"
        mount -t tmpfs -o mode=1777 tmpfs "$0/dev/shm"
        mount --bind "$1" "$0/var/cache/apt/archives"
        shift
        exec env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 DEBIAN_FRONTEND=noninteractive \
            chroot "$0" "$@"' "$system" "$folder/archives" "$@"
}

as_owner() {
    in_system setpriv --reuid=1000 --regid=1000 --clear-groups \
        env HOME=$owner_home --chdir=$owner_home "$@"
}

# on_desktop COMMAND...: in a session with a panel, as the user, on a screen high enough for all of the
# settings.
on_desktop() {
    as_owner SCREEN=1280x2200 timeout 300 "$here/scripts/virtual-desktop" /tmp/desktop "$@" || {
        tail -n 20 "$system/tmp/desktop/log"
        return 1
    }
}

# fingerprint: of each file in the user's home: its kind, mode and owner, and what is in it. In the
# settings of Claude Code that are the values, as they are spelled: whoever writes such a file may
# lay it out anew.
fingerprint() {
    (
        cd "$system$owner_home"
        find . -mindepth 1 ! -type f -printf '%P %y %m %U:%G %l\n'
        find . -type f ! -path './.claude*/settings.json' -printf '%P %y %m %U:%G ' \
            -exec sh -c 'sha256sum <"$1"' sh {} \;
        find . -type f -path './.claude*/settings.json' -printf '%P %y %m %U:%G ' -exec python3 -c '
import json, sys
spelled = {"parse_float": "float {}".format, "parse_int": "int {}".format}
print(json.dumps(json.load(open(sys.argv[1]), **spelled), sort_keys=True))' {} \;
    ) | LC_ALL=C sort
}

# expect_home FINGERPRINT: what the home was, but for what the settings and the README say that stays.
expect_home() {
    local remains difference
    remains='^[<>] (\.brimwatch(/limits(/.*)?)?|\.config/brimwatch(/.*)?|\.local/state(/brimwatch(/.*)?)?'
    remains+='|\.claude(-work)?/settings\.json\.brimwatch-backup'
    # Of every program with a window.
    remains+='|\.cache(/fontconfig(/.*)?)?) '
    difference=$(diff <(echo "$1") <(fingerprint) | grep '^[<>]' | grep -vE "$remains" || true)
    [[ -z $difference ]] || fail "The home is not what it was:
$difference"
}

# Where something of the program lies outside of the user's home.
traces() {
    (cd "$system" && find . -xdev \( -path ".$here" -o -path ./proc -o -path ./tmp -o \
        -path ".$owner_home" -o -path ./var/cache \) -prune -o -iname '*brimwatch*' -print)
}
