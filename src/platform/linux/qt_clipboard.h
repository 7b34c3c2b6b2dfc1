// The clipboard of the desktop, by Qt. Needs a QGuiApplication. Main thread.
#pragma once

#include "platform/clipboard.h"

namespace brimwatch {

class QtClipboard final : public Clipboard {
  public:
    void setSecretText(const QString& text) override;
};

}  // namespace brimwatch
