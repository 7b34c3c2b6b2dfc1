// The clipboard of the desktop. Main thread.
#pragma once

#include <QString>

namespace brimwatch {

class Clipboard {
  public:
    Clipboard() = default;
    Clipboard(const Clipboard&) = delete;
    Clipboard& operator=(const Clipboard&) = delete;
    virtual ~Clipboard() = default;

    // Puts the text in the place of whatever is there, and asks those who keep a history of the
    // clipboard to leave it alone.
    virtual void setSecretText(const QString& text) = 0;
};

}  // namespace brimwatch
