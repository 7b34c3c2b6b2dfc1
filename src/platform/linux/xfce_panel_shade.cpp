#include "platform/linux/xfce_panel_shade.h"

namespace brimwatch {

namespace {

constexpr const char* serviceName = "org.xfce.Xfconf";
constexpr const char* objectPath = "/org/xfce/Xfconf";
constexpr const char* panelChannel = "xfce4-panel";
constexpr const char* darkMode = "/panels/dark-mode";

constexpr const char* changeRule =
    "type='signal',path='/org/xfce/Xfconf',interface='org.xfce.Xfconf',member='PropertyChanged',"
    "arg0='xfce4-panel',arg1='/panels/dark-mode'";

}  // namespace

XfcePanelShade::XfcePanelShade(EventLoopBus& bus) {
    sd_bus_slot* slot = nullptr;
    if (sd_bus_add_match_async(bus.get(), &slot, changeRule, hearChange, nullptr, this) >= 0)
        subscription_.reset(slot);
    const BusMessage call = bus.newCall(serviceName, objectPath, serviceName, "GetProperty");
    if (!call) return;
    sd_bus_message_append(call.get(), "ss", panelChannel, darkMode);
    bus.call(call, this, [this](sd_bus_message* answer) { noteSetting(answer); });
}

int XfcePanelShade::hearChange(sd_bus_message* signal, void* shade, sd_bus_error* /*error*/) {
    sd_bus_message_skip(signal, "ss");
    static_cast<XfcePanelShade*>(shade)->noteSetting(signal);
    return 0;
}

// A value of another type is no setting.
void XfcePanelShade::noteSetting(sd_bus_message* message) {
    int isDark = 0;
    if (sd_bus_message_read(message, "v", "b", &isDark) <= 0) isDark = 0;
    if ((isDark != 0) == isDark_) return;
    isDark_ = isDark != 0;
    emit changed();
}

}  // namespace brimwatch
