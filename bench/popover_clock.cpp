// How long a popover takes from the click to its first picture on the screen.
//
//   popover_clock [TIMES]
//
// Clicks the item of the program in the panel of this desktop, the way panels do, and waits until
// the window that comes up holds a picture; then clicks again, and so on. Needs X11.

#include <systemd/sd-bus.h>
#include <xcb/xcb.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr milliseconds patience(10'000);

template <class Value>
using Answer = std::unique_ptr<Value, decltype(&std::free)>;

template <class Value>
Answer<Value> own(Value* answer) {
    return {answer, &std::free};
}

class Item {
  public:
    Item() {
        if (sd_bus_open_user(&bus_) < 0) throw std::runtime_error("there is no session bus");
        char** names = nullptr;
        sd_bus_list_names(bus_, &names, nullptr);
        for (char** name = names; name != nullptr && *name != nullptr; ++name)
            if (service_.empty() && isOurs(*name)) service_ = *name;
        if (service_.empty()) throw std::runtime_error("the program is not in the panel");
    }
    Item(const Item&) = delete;
    Item& operator=(const Item&) = delete;
    ~Item() { sd_bus_unref(bus_); }

    void click() {
        sd_bus_call_method(bus_, service_.c_str(), path, interface, "Activate", nullptr, nullptr,
                           "ii", 1200, 13);
    }

  private:
    static constexpr const char* path = "/StatusNotifierItem";
    static constexpr const char* interface = "org.kde.StatusNotifierItem";

    bool isOurs(const char* name) {
        if (*name != ':') return false;
        char* id = nullptr;
        const int result =
            sd_bus_get_property_string(bus_, name, path, interface, "Id", nullptr, &id);
        const auto owned = own(id);
        return result >= 0 && std::string_view(id) == "net.quillmoor.brimwatch";
    }

    sd_bus* bus_ = nullptr;
    std::string service_;
};

class Screen {
  public:
    Screen() : connection_(xcb_connect(nullptr, nullptr), xcb_disconnect) {
        if (xcb_connection_has_error(connection_.get()) != 0)
            throw std::runtime_error("there is no X11");
        root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data->root;
        const std::uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection_.get(), root_, XCB_CW_EVENT_MASK, &events);
        xcb_flush(connection_.get());
    }

    // Waits for a window to come up or to go.
    xcb_window_t waitFor(std::uint8_t eventType) {
        const Clock::time_point end = Clock::now() + patience;
        while (Clock::now() < end) {
            const auto event = own(xcb_poll_for_event(connection_.get()));
            if (!event) {
                std::this_thread::sleep_for(std::chrono::microseconds(100));
            } else if ((event->response_type & 0x7f) == eventType) {
                // Both kinds of event name the window in the same place.
                return reinterpret_cast<xcb_map_notify_event_t*>(event.get())->window;
            }
        }
        throw std::runtime_error("no window came or went");
    }

    void waitForPicture(xcb_window_t window) {
        const Clock::time_point end = Clock::now() + patience;
        while (Clock::now() < end)
            if (colorCount(window) > leastColors) return;
        throw std::runtime_error("the window stayed empty");
    }

  private:
    // A picture with texts has many, an empty window one.
    static constexpr std::size_t leastColors = 20;

    std::size_t colorCount(xcb_window_t window) {
        xcb_connection_t* const c = connection_.get();
        const auto size = own(xcb_get_geometry_reply(c, xcb_get_geometry(c, window), nullptr));
        if (!size) return 0;
        const auto image =
            own(xcb_get_image_reply(c,
                                    xcb_get_image(c, XCB_IMAGE_FORMAT_Z_PIXMAP, window, 0, 0,
                                                  size->width, size->height, ~0U),
                                    nullptr));
        if (!image) return 0;
        const std::uint8_t* bytes = xcb_get_image_data(image.get());
        std::set<std::uint32_t> colors;
        for (int i = 0; i + 4 <= xcb_get_image_data_length(image.get()); i += 4) {
            std::uint32_t color = 0;
            std::memcpy(&color, bytes + i, sizeof color);
            colors.insert(color);
        }
        return colors.size();
    }

    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection_;
    xcb_window_t root_ = 0;
};

double millisecondsToPicture(Item& item, Screen& screen) {
    const Clock::time_point start = Clock::now();
    item.click();
    screen.waitForPicture(screen.waitFor(XCB_MAP_NOTIFY));
    const std::chrono::duration<double, std::milli> duration = Clock::now() - start;
    std::this_thread::sleep_for(milliseconds(700));
    item.click();
    screen.waitFor(XCB_UNMAP_NOTIFY);
    // A click soon after a closing opens nothing.
    std::this_thread::sleep_for(milliseconds(700));
    return duration.count();
}

}  // namespace

int main(int argumentCount, char** arguments) {
    try {
        const int times = argumentCount > 1 ? std::atoi(arguments[1]) : 10;
        Item item;
        Screen screen;
        std::cout << "first popover " << millisecondsToPicture(item, screen) << " ms\n";
        std::vector<double> later;
        for (int i = 0; i < times; ++i)
            later.push_back(millisecondsToPicture(item, screen));
        std::sort(later.begin(), later.end());
        std::cout << "the next " << times << ": median " << later[later.size() / 2]
                  << " ms, longest " << later.back() << " ms\n";
    } catch (const std::exception& error) {
        std::cerr << "popover_clock: " << error.what() << '\n';
        return 1;
    }
}
