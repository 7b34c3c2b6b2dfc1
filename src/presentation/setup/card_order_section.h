// The order of the cards in the settings: a row for each card, with its key, its title, and whether
// it is dragged.
//
// The rows are up to date after `update`, and after each of its own moves. Main thread.
#pragma once

#include <QString>

#include "core/helper_model.h"
#include "presentation/keyed_rows_model.h"

namespace brimwatch {

class CardOrderSection final : public KeyedRowsModel {
    Q_OBJECT
    // There is something to arrange.
    Q_PROPERTY(bool isShown READ isShown NOTIFY isShownChanged)
    // The user came here to arrange the cards; whoever has shown him the rows takes it back.
    Q_PROPERTY(bool isRevealed READ isRevealed WRITE setRevealed NOTIFY isRevealedChanged)
    // The key of the card that is dragged, or empty.
    Q_PROPERTY(QString dragging READ dragging NOTIFY draggingChanged)

  public:
    // The model must outlive the section.
    explicit CardOrderSection(HelperModel& model);

    bool isShown() const { return isShown_; }
    bool isRevealed() const { return model_.revealsMenuCardOrder(); }
    void setRevealed(bool revealed) { model_.setRevealsMenuCardOrder(revealed); }
    const QString& dragging() const { return dragging_; }
    void update();

    // One place up or down. Where it can't go, nothing happens.
    Q_INVOKABLE void moveUp(const QString& key);
    Q_INVOKABLE void moveDown(const QString& key);
    Q_INVOKABLE void reset();

    Q_INVOKABLE void drag(const QString& key);
    // What is dragged came over that card, and takes its place.
    Q_INVOKABLE void enter(const QString& target);
    Q_INVOKABLE void drop();

  signals:
    void isShownChanged();
    void isRevealedChanged();
    void draggingChanged();

  private:
    void setDragging(const QString& key);
    bool hasCard(const QString& key) const;

    HelperModel& model_;
    bool isShown_ = false;
    QString dragging_;
};

}  // namespace brimwatch
