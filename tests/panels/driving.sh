# Drives the program by mouse, keyboard and accessibility. Sourced, not run.
#
# Expects $root and $pictures, and functions of `scripts/sample-home.sh`.

here=$root/tests/panels

step() { printf '  %s\n' "$*"; }
fail() {
    echo "$*"
    local file=$pictures/${0##*/}-failure
    import -window root "$file.png" || true
    "$here/accessible" >"$file.txt" || true
    exit 1
}

see() { # TEXT
    local seen
    seen=$("$here/accessible") && grep -qF -- "$1" <<<"$seen"
}
see_not() { ! see "$1"; }
press() { "$here/accessible" press "$@"; }
# Of the last one of that name: a control stands behind the title of its section or row.
has_state() { [[ " $("$here/accessible" states "$1" last) " == *" $2 "* ]]; } # NAME STATE
has_text() { [[ $("$here/accessible" text "$1") == "$2" ]]; } # NAME TEXT
has_no_state() { ! has_state "$@"; }
is_at_rest() { # NAME [last]: nothing glides any more
    local before
    before=$("$here/accessible" place "$@") && sleep 0.15 &&
        [[ $before == "$("$here/accessible" place "$@")" ]]
}
click() { # NAME [last]: by the mouse, where it is seen
    until_is is_at_rest "$@"
    local x y
    read -r x y < <("$here/accessible" place "$@")
    xdotool mousemove "$x" "$y" click 1
}
drag() { # NAME NAME: on to the place of the other
    local x y to_x to_y share
    read -r x y < <("$here/accessible" place "$1")
    read -r to_x to_y < <("$here/accessible" place "$2")
    xdotool mousemove "$x" "$y" mousedown 1
    for share in 1 2 3 4 5 6 7 8; do
        xdotool mousemove $((x + (to_x - x) * share / 8)) $((y + (to_y - y) * share / 8))
        sleep 0.05
    done
    xdotool mouseup 1
}
# By the keyboard: on to the control of that name.
reach() {
    local _
    for _ in {1..60}; do
        [[ $("$here/accessible" focused) == *"| $1" ]] && return
        xdotool key Tab
    done
    fail "the keyboard does not reach: $1"
}
until_is() { wait_for "$@" || fail "never came true: $*"; }
until_sees() { until_is see "$1"; }
until_gone() { until_is see_not "$1"; }

# Of its own windows, by their width: the settings are 460 wide.
widths() {
    if [[ -n ${SWAYSOCK:-} ]]; then
        swaymsg -t get_tree | python3 -c '
import json, sys
def windows(node):
    if (node.get("app_id") or "").endswith("brimwatch"):
        yield node
    for child in node["nodes"] + node["floating_nodes"]:
        yield from windows(child)
for window in windows(json.load(sys.stdin)):
    print(window["geometry"]["width"])'
        return
    fi
    local window
    for window in $(xdotool search --onlyvisible --class brimwatch 2>/dev/null); do
        xdotool getwindowgeometry --shell "$window" | sed -n 's/^WIDTH=//p'
    done
}
has_settings() { [[ " $(widths | tr '\n' ' ')" == *" 460 "* ]]; }
has_no_settings() { ! has_settings; }
# Somebody has the name of the program: a start before that may itself be the first one.
is_running() {
    gdbus call --session --dest org.freedesktop.DBus --object-path /org/freedesktop/DBus \
        --method org.freedesktop.DBus.GetNameOwner net.quillmoor.brimwatch >/dev/null 2>&1
}
call_settings() { # COMMAND...: by a second start
    until_is is_running
    timeout 20 "$@" || fail "the second start failed: $*"
    until_is has_settings
}
