#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QQuickView>
#include <QTest>
#include <string_view>

#include "phone_link_sheet_fixture.h"
#include "platform/linux/qt_clipboard.h"
#include "presentation/views/phone_link_window.h"
#include "presentation/views/view_palette.h"
#include "quick_items.h"
#include "spoken_item.h"

namespace brimwatch {
namespace {

using test::eventuallyInLoop;
using test::Spoken;
using test::spoken;

class PhoneLinkView : public test::PhoneLinkSheetFixture {
  protected:
    void show() {
        PhoneLinkSheet& sheet = publisher_ ? *sheet_ : openLinked();
        view_ = std::make_unique<PhoneLinkWindow>(sheet);
        view_->show(nullptr);
        for (const auto& [type, message] : test::LogCapture::messages())
            EXPECT_EQ(message.find(".qml"), std::string::npos) << message;
        ASSERT_NE(view_->window(), nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(view_->window()));
    }
    void TearDown() override { view_.reset(); }

    QQuickView& window() { return *view_->window(); }
    QQuickItem& item(const char* name) {
        QQuickItem* found = test::findItem(window().rootObject(), name);
        if (found == nullptr) throw std::runtime_error(name);
        return *found;
    }
    bool isSeen(const char* name) { return item(name).isVisible(); }
    void press(const char* name) {
        const QPointF center = item(name).mapToScene(item(name).boundingRect().center());
        QTest::mouseClick(&window(), Qt::LeftButton, {}, center.toPoint());
    }
    QQuickItem& dialogItem(const char* dialog, const char* name) {
        return *test::findItem(&item(dialog), name);
    }
    void pressIn(const char* dialog, const char* name) {
        QQuickItem& button = dialogItem(dialog, name);
        const QPointF center = button.mapToScene(button.boundingRect().center());
        QTest::mouseClick(&window(), Qt::LeftButton, {}, center.toPoint());
    }
    std::string text(const char* name) {
        return item(name).property("text").toString().toStdString();
    }

    std::unique_ptr<PhoneLinkWindow> view_;
};

TEST_F(PhoneLinkView, ShowsTheCodeTheTextAndTheWarning) {
    show();
    EXPECT_EQ(window().width(), 420);
    EXPECT_EQ(text("title"), "안드로이드 연결");
    EXPECT_EQ(spoken(&item("title")).role, QAccessible::Heading);
    EXPECT_EQ(text("instruction"),
              "안드로이드 앱에서 이 QR을 찍거나 아래 코드를 붙여 넣어 주세요.");
    EXPECT_EQ(text("codeText"), textOf(key_).toStdString());
    EXPECT_EQ(text("warning"),
              "이 QR이 있으면 누구나 한도를 볼 수 있어요. 로그인 정보는 담겨 있지 않아요.");
    EXPECT_FALSE(isSeen("problem"));
    EXPECT_EQ(spoken(&item("code")),
              (Spoken{QAccessible::Graphic, QStringLiteral("안드로이드 연결 QR")}));
    EXPECT_EQ(spoken(&item("codeText")).name, QStringLiteral("연결 코드"));
    EXPECT_EQ(text("phoneLink.copy"), "복사");
    EXPECT_EQ(text("phoneLink.rotate"), "새 QR로 바꾸기");
    EXPECT_EQ(text("phoneLink.disconnect"), "연결 끊기");
    EXPECT_EQ(text("phoneLink.close"), "닫기");
}

TEST_F(PhoneLinkView, StacksItsPartsWithinItsMargins) {
    show();
    const auto place = [this](const char* name) {
        return item(name).mapRectToScene(item(name).boundingRect());
    };
    EXPECT_EQ(place("title").topLeft(), QPointF(24, 24));
    EXPECT_EQ(place("code").top() - place("title").bottom(), 14);
    EXPECT_NEAR(place("code").center().x(), 210, 1);
    EXPECT_EQ(place("instruction").top() - place("code").bottom(), 14);
    EXPECT_EQ(place("phoneLink.close").right(), 420 - 24);
    EXPECT_EQ(place("phoneLink.close").bottom(), window().height() - 24);
}

TEST_F(PhoneLinkView, PutsTheTextIntoAFieldBesideItsButton) {
    show();
    const QQuickItem& code = item("codeText");
    const QQuickItem& field = *code.parentItem();
    EXPECT_EQ(code.position(), QPointF(10, 8));
    EXPECT_EQ(field.width() - code.width(), 20);
    // A layout gives whole pixels.
    EXPECT_NEAR(field.height() - code.height(), 16, 0.99);
    EXPECT_EQ(field.property("radius").toDouble(), 8);
    EXPECT_NEAR(field.property("color").value<QColor>().alphaF(), 0.06, 0.005);
    const QRectF place = field.mapRectToScene(field.boundingRect());
    const QQuickItem& button = item("phoneLink.copy");
    EXPECT_EQ(button.mapRectToScene(button.boundingRect()).left() - place.right(), 10);
}

TEST_F(PhoneLinkView, LaysTheCodeOnWhiteWithRoundCorners) {
    show();
    view_->setAppearance(Appearance::dark);
    const QImage picture = window().grabWindow();
    const QPoint corner = item("code").mapToScene(QPointF()).toPoint();
    const QColor background = picture.pixelColor(4, 4);
    ASSERT_NE(background, QColor(Qt::white));
    // A corner of 10 leaves out the first of these, and holds the others.
    EXPECT_EQ(picture.pixelColor(corner + QPoint(1, 1)), background);
    EXPECT_EQ(picture.pixelColor(corner + QPoint(4, 4)), QColor(Qt::white));
    EXPECT_EQ(picture.pixelColor(corner + QPoint(12, 1)), QColor(Qt::white));
}

TEST_F(PhoneLinkView, IsTheTitleTheProblemAndTheWayOutWithoutAKey) {
    failKeys("copy");
    open();
    show();
    for (const char* name : {"code", "instruction", "codeText", "phoneLink.copy", "warning",
                             "phoneLink.rotate", "phoneLink.disconnect"})
        EXPECT_FALSE(isSeen(name)) << name;
    for (const char* name : {"title", "problem", "phoneLink.close"})
        EXPECT_TRUE(isSeen(name)) << name;
}

TEST_F(PhoneLinkView, DrawsWhatAReaderSees) {
    show();
    const QImage picture = window().grabWindow();
    const QRectF code = item("code").mapRectToScene(item("code").boundingRect());
    // A corner of the first finder, behind the border of one module and the margin of three.
    const double module = code.width() / 45;
    const QPointF finder = code.topLeft() + QPointF(4.5, 4.5) * module;
    EXPECT_EQ(picture.pixelColor(finder.toPoint()), QColor(Qt::black));
    const QPointF border = code.topLeft() + QPointF(3.5, 3.5) * module;
    EXPECT_EQ(picture.pixelColor(border.toPoint()), QColor(Qt::white));
}

TEST_F(PhoneLinkView, CopiesAtAPress) {
    show();
    press("phoneLink.copy");
    EXPECT_EQ(clipboard_.texts, std::vector{textOf(key_)});
    EXPECT_EQ(text("phoneLink.copy"), "복사했어요");
    advance(std::chrono::seconds(2));
    EXPECT_EQ(text("phoneLink.copy"), "복사");
}

TEST_F(PhoneLinkView, GoesByItsButtonByEscapeAndByEnter) {
    show();
    press("phoneLink.close");
    EXPECT_FALSE(window().isVisible());
    for (const Qt::Key key : {Qt::Key_Escape, Qt::Key_Return, Qt::Key_Enter}) {
        view_->show(nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window()));
        QTest::keyClick(&window(), key);
        EXPECT_FALSE(window().isVisible()) << key;
    }
}

TEST_F(PhoneLinkView, AsksBeforeItRotates) {
    show();
    press("phoneLink.rotate");
    ASSERT_TRUE(isSeen("rotation"));
    EXPECT_EQ(item("rotation").property("title").toString(), "새 QR로 바꿀까요?");
    EXPECT_EQ(item("rotation").property("message").toString(),
              "지금 연결한 안드로이드 폰은 더 이상 한도를 받지 못해요. 새 QR을 다시 찍어 주세요.");
    pressIn("rotation", "dialog.cancel");
    EXPECT_FALSE(isSeen("rotation"));
    settle();
    EXPECT_EQ(text("codeText"), textOf(key_).toStdString());
    press("phoneLink.rotate");
    holdCalls();
    pressIn("rotation", "dialog.confirm");
    EXPECT_FALSE(item("phoneLink.rotate").isEnabled());
    EXPECT_FALSE(item("phoneLink.disconnect").isEnabled());
    settle();
    EXPECT_TRUE(item("phoneLink.rotate").isEnabled());
    EXPECT_NE(text("codeText"), textOf(key_).toStdString());
    EXPECT_EQ(text("codeText"), textOf(storedKey().value()).toStdString());
    EXPECT_TRUE(window().isVisible());
}

TEST_F(PhoneLinkView, AsksBeforeItEndsTheLinkAndGoesWithIt) {
    show();
    press("phoneLink.disconnect");
    ASSERT_TRUE(isSeen("ending"));
    EXPECT_EQ(item("ending").property("title").toString(), "안드로이드 연결을 끊을까요?");
    EXPECT_EQ(item("ending").property("message").toString(),
              "보낸 한도를 지우고 이 QR을 더 쓸 수 없게 해요.");
    pressIn("ending", "dialog.confirm");
    settle();
    EXPECT_FALSE(storedKey());
    EXPECT_FALSE(window().isVisible());
}

TEST_F(PhoneLinkView, StaysWithTheProblemIfTheLinkCannotBeEnded) {
    show();
    failKeys("remove");
    press("phoneLink.disconnect");
    pressIn("ending", "dialog.confirm");
    settle();
    EXPECT_TRUE(window().isVisible());
    EXPECT_TRUE(isSeen("problem"));
    EXPECT_EQ(text("problem"), "연결 키를 지우지 못했어요 (오류 -25308).");
}

TEST_F(PhoneLinkView, TakesNothingBackWhenADialogIsEscaped) {
    show();
    press("phoneLink.disconnect");
    QTest::keyClick(&window(), Qt::Key_Escape);
    EXPECT_FALSE(isSeen("ending"));
    EXPECT_TRUE(window().isVisible());
    settle();
    EXPECT_TRUE(storedKey());
}

TEST_F(PhoneLinkView, GoesByEscapeAfterADialogWasEscaped) {
    show();
    press("phoneLink.disconnect");
    QTest::keyClick(&window(), Qt::Key_Escape);
    ASSERT_TRUE(window().isVisible());
    QTest::keyClick(&window(), Qt::Key_Escape);
    EXPECT_FALSE(window().isVisible());
}

TEST_F(PhoneLinkView, MakesTheLinkAnewAtEachShowing) {
    show();
    press("phoneLink.close");
    store(test::keyFilledWith('n'));
    view_->show(nullptr);
    EXPECT_EQ(text("codeText"), textOf(test::keyFilledWith('n')).toStdString());
}

TEST_F(PhoneLinkView, ForgetsTheProblemOfAFormerShowing) {
    failKeys("copy");
    open();
    show();
    ASSERT_TRUE(isSeen("problem"));
    press("phoneLink.close");
    keys_.answer = {};
    view_->show(nullptr);
    EXPECT_FALSE(isSeen("problem"));
    EXPECT_TRUE(isSeen("codeText"));
}

TEST_F(PhoneLinkView, DoesNotShowADialogAgainThatWasOpenWhenItWent) {
    show();
    for (const char* dialog : {"rotation", "ending"}) {
        const bool isRotation = std::string_view(dialog) == "rotation";
        press(isRotation ? "phoneLink.rotate" : "phoneLink.disconnect");
        ASSERT_TRUE(isSeen(dialog));
        window().close();
        view_->show(nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window()));
        EXPECT_FALSE(isSeen(dialog));
    }
    EXPECT_TRUE(storedKey());
    QTest::keyClick(&window(), Qt::Key_Return);
    EXPECT_FALSE(window().isVisible());
}

TEST_F(PhoneLinkView, ResumesAPausedLinkAlsoIfItIsShownAlready) {
    show();
    EXPECT_EQ(run(publisher().pause()), "");
    ASSERT_TRUE(publisher().isPaused());
    view_->show(nullptr);
    EXPECT_FALSE(publisher().isPaused());
}

TEST_F(PhoneLinkView, GoesByEnterAlsoAfterAPressOfAnotherButton) {
    show();
    press("phoneLink.copy");
    QTest::keyClick(&window(), Qt::Key_Return);
    EXPECT_FALSE(window().isVisible());
    EXPECT_EQ(clipboard_.texts.size(), 1U);
}

TEST_F(PhoneLinkView, GoesByEnterAlsoAfterADialogOfAnotherButton) {
    show();
    for (const char* name : {"phoneLink.rotate", "phoneLink.disconnect"}) {
        press(name);
        QTest::keyClick(&window(), Qt::Key_Escape);
        ASSERT_TRUE(window().isVisible()) << name;
        QTest::keyClick(&window(), Qt::Key_Return);
        EXPECT_FALSE(window().isVisible()) << name;
        view_->show(nullptr);
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&window()));
    }
}

TEST_F(PhoneLinkView, IsModalForTheWindowThatItIsShownFor) {
    QWindow other;
    view_ = std::make_unique<PhoneLinkWindow>(openLinked());
    view_->show(&other);
    EXPECT_EQ(window().modality(), Qt::WindowModal);
    window().close();
    view_->show(nullptr);
    EXPECT_EQ(window().modality(), Qt::NonModal);
}

TEST_F(PhoneLinkView, StaysAsModalAsItWasShown) {
    show();
    QWindow other;
    view_->show(&other);
    EXPECT_EQ(window().modality(), Qt::NonModal);
}

TEST_F(PhoneLinkView, StaysBeforeTheWindowThatItIsShownFor) {
    show();
    EXPECT_EQ(window().transientParent(), nullptr);
    QWindow other;
    view_->show(&other);
    EXPECT_EQ(window().transientParent(), &other);
    view_->show(nullptr);
    EXPECT_EQ(window().transientParent(), nullptr);
}

TEST_F(PhoneLinkView, FollowsTheAppearance) {
    show();
    const QColor light = window().grabWindow().pixelColor(4, 4);
    view_->setAppearance(Appearance::dark);
    EXPECT_NE(window().grabWindow().pixelColor(4, 4), light);
}

TEST(QtClipboard, AsksHistoriesToLeaveTheTextAlone) {
    QtClipboard clipboard;
    clipboard.setSecretText(QStringLiteral("brimwatch://link"));
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    EXPECT_EQ(data->text(), "brimwatch://link");
    EXPECT_EQ(data->data("x-kde-passwordManagerHint"), "secret");
}

}  // namespace
}  // namespace brimwatch
