// Whether the session starts this program when the user logs in. The session is the only truth:
// the user and the tools of the desktop may change it at any time. Main thread.
#pragma once

#include "support/file_system.h"

namespace brimwatch {

class LoginItem {
  public:
    LoginItem() = default;
    LoginItem(const LoginItem&) = delete;
    LoginItem& operator=(const LoginItem&) = delete;
    virtual ~LoginItem() = default;

    // What cannot be found out counts as switched off.
    virtual bool isEnabled() = 0;
    virtual FileResult<void> setEnabled(bool enabled) = 0;
};

}  // namespace brimwatch
