// A menu content with the cards that a test wants, over a model with accounts of its own.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "model_fixture.h"
#include "presentation/menu_content_model.h"
#include "presentation/subscription_usage_card.h"

namespace brimwatch::test {

class SampleContent final : private ModelFixture {
  public:
    // Whether it counts as empty, and its cards as such that can be reordered, depends on their
    // number. They are as given until the content is hidden.
    explicit SampleContent(const std::vector<UsageCardContent>& cards) {
        for (int account = 0; account < static_cast<int>(cards.size()); ++account) {
            makeRegisteredFolder(".claude-" + std::to_string(account));
            receive(account, 28);
        }
        start();
        content_ = std::make_unique<MenuContentModel>(MenuContentModel::Surroundings{
            .model = ModelFixture::model(),
            .now = [this] { return time_.now(); },
            .screenHeights = [this] { return std::vector{screenHeight}; },
            .openSetup = [this] { calls.emplace_back("openSetup"); },
            .quit = [this] { calls.emplace_back("quit"); }});
        content_->setShown(true);
        content_->cards()->setCards(cards);
    }

    MenuContentModel& model() { return *content_; }
    bool revealsCardOrder() { return ModelFixture::model().revealsMenuCardOrder(); }
    // As a status line run would.
    void receive(int account, double usedPercentage) {
        LimitsFile file = figures("claude-" + std::to_string(account), 0, usedPercentage);
        file.windows.erase("five_hour");
        // Without a reset, so that no card counts down.
        file.windows.at("seven_day").resetsAt.reset();
        writeLimits(file);
    }

    double screenHeight = 1000;
    std::vector<std::string> calls;

  private:
    void TestBody() override {}

    std::unique_ptr<MenuContentModel> content_;
};

}  // namespace brimwatch::test
