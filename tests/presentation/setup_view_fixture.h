// The settings window over a model in the hands of a test, and what is to be seen of it.
#pragma once

#include <QQuickItem>
#include <QQuickView>
#include <QTest>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "presentation/views/quick_setup_window.h"
#include "quick_items.h"
#include "scripted_desktop.h"
#include "setup_fixture.h"
#include "spoken_item.h"

namespace brimwatch::test {

class SetupViewFixture : public SetupFixture {
  protected:
    // Over the model as it is now. Nothing of it scrolls on such a screen.
    void show(double textScale = 1, double screenHeight = 6000) {
        makeSettings();
        window_ = std::make_unique<QuickSetupWindow>(QuickSetupWindow::Surroundings{
            .settings = *settings_, .desktop = &appearance_, .screen = [screenHeight] {
                return std::optional(QRect(0, 0, 1280, static_cast<int>(screenHeight)));
            }});
        window_->setTextScale(textScale);
        window_->show(nullptr);
        parentWindow_ = window_->window();
        for (const auto& [type, message] : LogCapture::messages())
            EXPECT_EQ(message.find(".qml"), std::string::npos) << message;
        ASSERT_NE(window_->window(), nullptr);
        ASSERT_TRUE(eventuallyInLoop([this] { return window().isActive(); }));
    }
    void TearDown() override {
        for (const auto& [type, message] : LogCapture::messages())
            EXPECT_EQ(message.find(".qml"), std::string::npos) << message;
        window_.reset();
    }

    QQuickView& window() { return *window_->window(); }
    QQuickItem& root() { return *window().rootObject(); }
    // The first of that identifier, which has to be there.
    QQuickItem& item(const char* name) { return itemIn(*window().contentItem(), name); }
    static QQuickItem& itemIn(QQuickItem& around, const char* name) {
        QQuickItem* found = findItem(&around, name);
        if (found == nullptr) throw std::runtime_error(std::string("no item ") + name);
        return *found;
    }
    bool isSeen(const char* name) {
        const QQuickItem* found = findItem(window().contentItem(), name);
        return found != nullptr && found->isVisible();
    }
    static QString textOf(const QQuickItem& shown) { return shown.property("text").toString(); }
    QString text(const char* name) { return textOf(item(name)); }
    static QColor colorOf(const QQuickItem& shown) {
        return shown.property("color").value<QColor>();
    }
    // In the coordinates of the window.
    static QRectF place(const QQuickItem& shown) {
        return shown.mapRectToScene(QRectF(QPointF(), shown.size()));
    }
    void press(QQuickItem& pressed) {
        QTest::mouseClick(&window(), Qt::LeftButton, {}, place(pressed).center().toPoint());
        QCoreApplication::processEvents();
    }
    void press(const char* name) { press(item(name)); }
    void pressKey(int key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&window(), static_cast<Qt::Key>(key), modifiers);
        QCoreApplication::processEvents();
    }
    void write(const char* text) {
        for (const QChar letter : QString::fromUtf8(text))
            QTest::sendKeyEvent(QTest::Click, &window(), Qt::Key_unknown, QString(letter), {});
    }
    // An animation or a timer of the views.
    const QObject& helperOf(const char* name) {
        const QObject* found = root().findChild<QObject*>(QString::fromUtf8(name));
        if (found == nullptr) throw std::runtime_error(std::string("no object ") + name);
        return *found;
    }
    bool hasFocus(const char* name) { return item(name).hasActiveFocus(); }

    ScriptedAppearance appearance_;
    std::unique_ptr<QuickSetupWindow> window_;
};

}  // namespace brimwatch::test
