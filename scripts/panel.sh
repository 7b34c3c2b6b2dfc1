# The panel of a virtual desktop, by its name in PANEL. Sourced, not run.

# Leaves it running in the background, and its process in $panel_process.
start_panel() {
    case $PANEL in
        xfce) xfce4-panel --disable-wm-check & ;;
        lxqt) lxqt-panel & ;;
        trayer) trayer --edge top --align right --height 28 --tint 0x303030 & ;;
        waybar) env -u DISPLAY waybar & ;;
    esac
    panel_process=$!
}

kill_panel() {
    case $PANEL in
        xfce) pkill -KILL -x xfce4-panel ;;
        lxqt) pkill -KILL -x lxqt-panel ;;
        trayer) pkill -KILL -x trayer ;;
        waybar) pkill -KILL -x waybar ;;
    esac
}
