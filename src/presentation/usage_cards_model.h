// The cards as a list for views, one row a card. Roles are named as the fields of
// `UsageCardContent`; levels are the numbers of `UsageLevel`. Main thread.
#pragma once

#include <vector>

#include "presentation/keyed_rows_model.h"
#include "presentation/subscription_usage_card.h"

namespace brimwatch {

class UsageCardsModel : public KeyedRowsModel {
    Q_OBJECT

  public:
    UsageCardsModel();

    // From top to bottom. Two of one account count as different cards.
    void setCards(const std::vector<UsageCardContent>& cards);

    const std::vector<UsageCardContent>& cards() const { return cards_; }

  private:
    std::vector<UsageCardContent> cards_;
};

}  // namespace brimwatch
