# How to start each panel alone on a display, with nothing in it but its tray. Sourced, not run.
#
# start_PANEL leaves the panel running in the background and its process in $panel_process.

prepare_xfce() {
    export XDG_CURRENT_DESKTOP=XFCE
    local folder="$XDG_CONFIG_HOME/xfce4/xfconf/xfce-perchannel-xml"
    mkdir -p "$folder"
    cat >"$folder/xfce4-panel.xml" <<'XML'
<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="dark-mode" type="bool" value="true"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="26"/>
      <property name="plugin-ids" type="array"><value type="int" value="1"/></property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="systray"/>
  </property>
</channel>
XML
    openbox &
}
start_xfce() {
    xfce4-panel --disable-wm-check &
    panel_process=$!
}
# The tray is a process of its own.
kill_xfce() { kill -KILL "$panel_process" $(pgrep -P "$panel_process"); }

prepare_lxqt() {
    export XDG_CURRENT_DESKTOP=LXQt
    mkdir -p "$XDG_CONFIG_HOME/lxqt"
    cat >"$XDG_CONFIG_HOME/lxqt/panel.conf" <<'INI'
panels=panel1
[panel1]
plugins=statusnotifier
position=Top
panelSize=32
iconSize=22
width=100
width-percent=true
[statusnotifier]
type=statusnotifier
INI
    openbox &
}
start_lxqt() {
    lxqt-panel &
    panel_process=$!
}
kill_lxqt() { kill -KILL "$panel_process"; }

prepare_trayer() { openbox & }
start_trayer() {
    trayer --edge top --align right --height 26 --tint 0x303030 &
    panel_process=$!
}
kill_trayer() { kill -KILL "$panel_process"; }

prepare_waybar() {
    export XDG_CURRENT_DESKTOP=sway WLR_BACKENDS=x11 WLR_RENDERER=pixman
    mkdir -p "$XDG_CONFIG_HOME/waybar"
    echo '{"position": "top", "modules-right": ["tray"], "tray": {"icon-size": 20}}' \
        >"$XDG_CONFIG_HOME/waybar/config"
    echo 'output * resolution 800x300' >"$HOME/sway.conf"
    sway --config "$HOME/sway.conf" &
    until compgen -G "$XDG_RUNTIME_DIR/wayland-?" >/dev/null; do sleep 0.1; done
    local socket
    socket=$(compgen -G "$XDG_RUNTIME_DIR/wayland-?")
    export WAYLAND_DISPLAY=${socket##*/}
}
start_waybar() {
    env -u DISPLAY waybar &
    panel_process=$!
}
kill_waybar() { kill -KILL "$panel_process"; }
