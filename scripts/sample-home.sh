# A home folder with sample accounts, and a Brimwatch that lives in it. Sourced, not run.
#
# Expects $root and $home, and the release build.

brimwatch=$root/build/release/bin/brimwatch

# The start of a command that shall take this home for that of its user. What leads to the desktop
# stays.
in_home=(env -u BRIMWATCH_HOME -u BRIMWATCH_NEXT_STATUSLINE -u CLAUDE_CONFIG_DIR -u CODEX_HOME
    "HOME=$home" "XDG_CONFIG_HOME=$home/.config" "XDG_STATE_HOME=$home/.local/state"
    "XDG_DATA_HOME=$home/.local/share" "XDG_RUNTIME_DIR=$home/.runtime")
if [[ -n ${XDG_RUNTIME_DIR:-} ]]; then
    in_home+=("DBUS_SESSION_BUS_ADDRESS=${DBUS_SESSION_BUS_ADDRESS:-unix:path=$XDG_RUNTIME_DIR/bus}")
    [[ -z ${WAYLAND_DISPLAY:-} || $WAYLAND_DISPLAY == /* ]] ||
        in_home+=("WAYLAND_DISPLAY=$XDG_RUNTIME_DIR/$WAYLAND_DISPLAY")
fi
[[ -z ${DISPLAY:-} ]] || in_home+=("XAUTHORITY=${XAUTHORITY:-$HOME/.Xauthority}")

# make_sample_home NAME...: with a Claude Code folder for each; "default" is that of everybody.
make_sample_home() {
    rm -rf "$home"
    mkdir -p "$home/.runtime"
    chmod 700 "$home/.runtime"
    # The keys of samples are no concern of the user's key store.
    mkdir -p "$home/.local/state/brimwatch"
    echo '"files"' >"$home/.local/state/brimwatch/keyStore.json"
    local name
    for name in "$@"; do
        mkdir -p "$(claude_folder "$name")"
        if [[ $name == default ]]; then
            cp "$root/tests/data/claude-2.1.329-dot-claude.json" "$home/.claude.json"
        else
            cp "$root/tests/data/claude-2.1.329-dot-claude.json" \
                "$home/.claude-$name/.claude.json"
        fi
    done
}

claude_folder() { # NAME
    if [[ $1 == default ]]; then echo "$home/.claude"; else echo "$home/.claude-$1"; fi
}

# A document that Claude Code 2.1.329 wrote, with other figures and its two reset times moved into
# the future.
status_line_document() { # FIVE_HOUR_USED WEEK_USED
    local five_hour=$(($(date +%s) + 2 * 3600 + 780)) seven_day=$(($(date +%s) + 4 * 86400 + 3700))
    sed "s/1795244084/$five_hour/; s/1795535084/$seven_day/
         s/\"used_percentage\":41.3/\"used_percentage\":$1/
         s/\"used_percentage\":62.5/\"used_percentage\":$2/" \
        "$root/tests/data/claude-2.1.329-after-response-with-rate-limits.json"
}

# The status line that stands in the settings of the account, run as Claude Code runs it.
run_status_line() { # NAME FIVE_HOUR_USED WEEK_USED
    local command
    command=$(sed -n 's/^ *"command": "\(.*\)",\{0,1\}$/\1/p' \
        "$(claude_folder "$1")/settings.json")
    status_line_document "$2" "$3" | "${in_home[@]}" sh -c "$command"
    echo
}

# What Brimwatch keeps of an answer of Codex, which is not asked here.
write_codex_figures() { # FIVE_HOUR_USED WEEK_USED
    local now
    now=$(date +%s)
    mkdir -p "$home/.brimwatch/limits"
    cat > "$home/.brimwatch/limits/codex-default.json" <<JSON
{"account":"default","plan_tier":"Plus","provider":"codex","updated_at":$now,"version":1,
 "windows":{"five_hour":{"resets_at":$((now + 9000)),"used_percentage":$1},
            "seven_day":{"resets_at":$((now + 500000)),"used_percentage":$2}}}
JSON
}

wait_for() { # COMMAND...
    local _
    for _ in {1..100}; do
        "$@" && return
        sleep 0.1
    done
    echo "nothing came of: $*" >&2
    return 1
}

is_connected() { [[ -s $(claude_folder "$1")/settings.json ]]; } # NAME
