// A popover that is made when it is first shown, since most of what it needs is needed by nothing
// else in the program. Main thread.
#pragma once

#include <functional>
#include <memory>

#include "presentation/popover.h"

namespace brimwatch {

class LazyPopover final : public Popover {
  public:
    // Gives nothing where it can't be made, which `make` has told the log; the next click tries
    // again.
    using Make = std::function<std::unique_ptr<Popover>()>;

    explicit LazyPopover(Make make);

    bool isShown() const override { return popover_ && popover_->isShown(); }
    void show(std::optional<QPoint> click, const QString& activationToken) override;
    void performClose() override;
    void setAppearance(Appearance appearance) override;
    void setTextScale(double scale) override;

  private:
    void prepare();

    Make make_;
    Appearance appearance_ = Appearance::light;
    double textScale_ = 1;
    std::unique_ptr<Popover> popover_;
};

}  // namespace brimwatch
