// The cards as a list for views, one row a card.
//
// A new state becomes the fewest changes that lead to it: rows that stay are not touched, and of a
// card that changed only the roles that did. Roles are named as the fields of `UsageCardContent`;
// levels are the numbers of `UsageLevel`. Main thread.
#pragma once

#include <QAbstractListModel>
#include <vector>

#include "presentation/subscription_usage_card.h"

namespace brimwatch {

class UsageCardsModel : public QAbstractListModel {
    Q_OBJECT

  public:
    // From top to bottom. Two of one account count as different cards.
    void setCards(const std::vector<UsageCardContent>& cards);

    std::vector<UsageCardContent> cards() const;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

  private:
    using Keys = std::vector<QString>;
    struct Row {
        QString key;
        UsageCardContent content;
    };

    static Keys distinctKeys(const std::vector<UsageCardContent>& cards);
    int rowOf(const QString& key) const;  // -1 if there is none
    void removeAllBut(const Keys& keys);
    void arrange(const Keys& keys);
    void moveRow(int row, int place);
    std::vector<QString> restingKeys(const Keys& keys) const;
    void insertRow(int row, Row inserted);
    void updateRow(int row, const UsageCardContent& content);

    std::vector<Row> rows_;
};

}  // namespace brimwatch
