// The time zone of the process for as long as a test needs it.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace brimwatch::test {

class TimeZone {
  public:
    // A value of the variable TZ, as in "Asia/Seoul".
    explicit TimeZone(const char* zone) {
        const char* former = std::getenv("TZ");
        if (former != nullptr) former_ = former;
        move(zone);
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;
    ~TimeZone() {
        if (former_) {
            move(former_->c_str());
        } else {
            ::unsetenv("TZ");
        }
    }

    // To another one, as when the user travels.
    static void move(const char* zone) { ::setenv("TZ", zone, 1); }

  private:
    std::optional<std::string> former_;
};

}  // namespace brimwatch::test
