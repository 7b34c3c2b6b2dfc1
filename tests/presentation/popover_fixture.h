// The popover with the cards that a test wants, and what is to be seen of it.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QQuickItem>
#include <QQuickView>
#include <QTest>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "harness/process.h"
#include "presentation/views/quick_popover.h"
#include "presentation/views/view_palette.h"
#include "quick_items.h"
#include "sample_cards.h"
#include "sample_content.h"
#include "spoken_item.h"

namespace brimwatch::test {

class PopoverFixture : public ::testing::Test {
  protected:
    void show(const std::vector<UsageCardContent>& cards, double textScale = 1) {
        popover_.reset();
        content_ = std::make_unique<SampleContent>(cards);
        popover_ = std::make_unique<QuickPopover>(
            QuickPopover::Surroundings{.content = content_->model()});
        popover_->setAppearance(Appearance::light);
        popover_->setTextScale(textScale);
        popover_->show(QPoint(300, 0), QString());
        ASSERT_TRUE(popover_->isShown());
        ASSERT_TRUE(eventuallyInLoop([this] { return window().isActive(); }));
    }

    QQuickView& window() { return *popover_->window(); }
    QQuickItem& root() { return *window().rootObject(); }
    // The first of that identifier, which has to be there.
    QQuickItem& item(const char* name) {
        QQuickItem* found = findItem(window().contentItem(), name);
        if (found == nullptr) throw std::runtime_error(std::string("no item ") + name);
        return *found;
    }
    std::vector<QQuickItem*> items(const char* name) {
        return findItems(window().contentItem(), name);
    }
    QString text(const char* name) { return item(name).property("text").toString(); }
    int pixelSize(const char* name) {
        return item(name).property("font").value<QFont>().pixelSize();
    }
    int weight(const char* name) { return item(name).property("font").value<QFont>().weight(); }
    QColor color(const char* name) { return item(name).property("color").value<QColor>(); }
    // In the coordinates of the popover.
    QRectF place(const QQuickItem& shown) {
        return shown.mapRectToItem(&root(), QRectF(QPointF(), shown.size()));
    }
    QRectF place(const char* name) { return place(item(name)); }

    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&window(), key, modifiers);
    }
    void click(const char* name, Qt::MouseButton button = Qt::LeftButton) {
        QTest::mouseClick(&window(), button, {}, place(name).center().toPoint());
    }

    std::unique_ptr<SampleContent> content_;
    std::unique_ptr<QuickPopover> popover_;
};

}  // namespace brimwatch::test
