#include "presentation/views/quick_popover.h"

#include <QGuiApplication>
#include <QLoggingCategory>
#include <QRasterWindow>
#include <QScreen>

#include "popover_fixture.h"

namespace brimwatch {
namespace {

using test::eventuallyInLoop;

class QuickPopoverTest : public test::PopoverFixture {
  protected:
    QuickPopover& make(QuickPopover::Surroundings surroundings) {
        popover_ = std::make_unique<QuickPopover>(std::move(surroundings));
        connectSignals();
        return *popover_;
    }
    QuickPopover& make(int cards = 1) {
        content_ = std::make_unique<test::SampleContent>(test::cards(cards));
        content_->model().setShown(false);
        return make({.content = content_->model()});
    }
    void connectSignals() {
        const auto log = [this](void (Popover::*signal)(), const char* name) {
            QObject::connect(popover_.get(), signal, [this, name] { signals_.emplace_back(name); });
        };
        log(&Popover::willShow, "willShow");
        log(&Popover::didShow, "didShow");
        log(&Popover::willClose, "willClose");
        log(&Popover::didClose, "didClose");
    }
    void showAndWait() {
        popover_->show(QPoint(300, 0), QString());
        ASSERT_TRUE(eventuallyInLoop([this] { return window().isActive(); }));
    }
    std::vector<std::string> takeSignals() { return std::exchange(signals_, {}); }

    std::vector<std::string> signals_;
};

using Names = std::vector<std::string>;

TEST_F(QuickPopoverTest, OffersTheTokenOfTheClickWhileItAsksForTheFocus) {
    constexpr const char* variable = "XDG_ACTIVATION_TOKEN";
    content_ = std::make_unique<test::SampleContent>(test::cards(1));
    content_->model().setShown(false);
    std::vector<std::string> offered;
    make({.content = content_->model(), .activate = [&offered](QWindow& window) {
              offered.push_back(qgetenv(variable).toStdString());
              window.requestActivate();
          }});
    const auto show = [this](const char* token) {
        popover_->show(QPoint(300, 0), QString::fromUtf8(token));
    };
    show("first");
    EXPECT_TRUE(qEnvironmentVariableIsEmpty(variable));
    show("while it is shown");
    popover_->performClose();
    show("");
    EXPECT_EQ(offered, (Names{"first", "while it is shown", ""}));
    EXPECT_FALSE(qEnvironmentVariableIsSet(variable));
    ASSERT_TRUE(eventuallyInLoop([this] { return window().isActive(); }));
}

TEST_F(QuickPopoverTest, LeavesATokenOfTheProgramToQt) {
    constexpr const char* variable = "XDG_ACTIVATION_TOKEN";
    make();
    qputenv(variable, "of the start");
    popover_->show(QPoint(300, 0), QString());
    EXPECT_EQ(qgetenv(variable), QByteArray("of the start"));
    qunsetenv(variable);
}

TEST_F(QuickPopoverTest, MakesNothingBeforeItIsShown) {
    make().setAppearance(Appearance::dark);
    popover_->setTextScale(1.25);
    popover_->performClose();
    EXPECT_FALSE(popover_->isShown());
    EXPECT_EQ(popover_->window(), nullptr);
    EXPECT_EQ(takeSignals(), Names{});
}

TEST_F(QuickPopoverTest, TellsOfShowingAndClosingInOrder) {
    make();
    for (int round = 0; round < 3; ++round) {
        showAndWait();
        EXPECT_TRUE(popover_->isShown());
        EXPECT_TRUE(window().isVisible());
        EXPECT_EQ(takeSignals(), (Names{"willShow", "didShow"}));
        popover_->performClose();
        EXPECT_FALSE(popover_->isShown());
        EXPECT_FALSE(window().isVisible());
        EXPECT_EQ(takeSignals(), (Names{"willClose", "didClose"}));
    }
}

TEST_F(QuickPopoverTest, TellsNothingTwice) {
    make();
    showAndWait();
    showAndWait();
    EXPECT_EQ(takeSignals(), (Names{"willShow", "didShow"}));
    popover_->performClose();
    popover_->performClose();
    EXPECT_EQ(takeSignals(), (Names{"willClose", "didClose"}));
}

TEST_F(QuickPopoverTest, IsNotShownOrClosedFromWithinItsOwnSteps) {
    make();
    QObject::connect(popover_.get(), &Popover::willShow, [this] {
        EXPECT_FALSE(popover_->isShown());
        popover_->performClose();
        popover_->show(std::nullopt, QString());
    });
    QObject::connect(popover_.get(), &Popover::willClose, [this] {
        popover_->performClose();
        popover_->show(std::nullopt, QString());
    });
    showAndWait();
    popover_->performClose();
    EXPECT_EQ(takeSignals(), (Names{"willShow", "didShow", "willClose", "didClose"}));
}

TEST_F(QuickPopoverTest, CanBeClosedAsSoonAsItIsShown) {
    make();
    QObject::connect(popover_.get(), &Popover::didShow, [this] { popover_->performClose(); });
    popover_->show(QPoint(300, 0), QString());
    EXPECT_FALSE(popover_->isShown());
    EXPECT_EQ(takeSignals(), (Names{"willShow", "didShow", "willClose", "didClose"}));
    EXPECT_FALSE(window().isVisible());
}

TEST_F(QuickPopoverTest, KeepsItsWindow) {
    make();
    showAndWait();
    const QQuickView* first = popover_->window();
    const QQuickItem* root = first->rootObject();
    popover_->performClose();
    showAndWait();
    EXPECT_EQ(popover_->window(), first);
    EXPECT_EQ(first->rootObject(), root);
}

TEST_F(QuickPopoverTest, ClosesByEscape) {
    make();
    showAndWait();
    press(Qt::Key_Escape);
    EXPECT_FALSE(popover_->isShown());
    EXPECT_EQ(takeSignals(), (Names{"willShow", "didShow", "willClose", "didClose"}));
}

TEST_F(QuickPopoverTest, ClosesWhenItLosesTheFocus) {
    make();
    showAndWait();
    QRasterWindow other;
    other.show();
    other.requestActivate();
    EXPECT_TRUE(eventuallyInLoop([this] { return !popover_->isShown(); }));
    EXPECT_EQ(takeSignals(), (Names{"willShow", "didShow", "willClose", "didClose"}));
}

TEST_F(QuickPopoverTest, ClosesAsAWindowAndOpensAgain) {
    make();
    showAndWait();
    window().close();
    EXPECT_FALSE(popover_->isShown());
    EXPECT_EQ(takeSignals(), (Names{"willShow", "didShow", "willClose", "didClose"}));
    showAndWait();
    EXPECT_FALSE(window().grabWindow().isNull());
    EXPECT_TRUE(window().isVisible());
}

TEST_F(QuickPopoverTest, RebuildsItsCardsOnlyWhileItIsShown) {
    make();
    EXPECT_TRUE(content_->model().cards()->cards().size() == 1);
    content_->receive(0, 40);
    showAndWait();
    popover_->performClose();
    const QString amount = text("amount");
    content_->receive(0, 60);
    content_->model().receiveNow();
    for (int turn = 0; turn < 20; ++turn)
        QCoreApplication::processEvents();
    EXPECT_EQ(text("amount"), amount);
    showAndWait();
    EXPECT_EQ(text("amount"), QStringLiteral("40%"));
}

TEST_F(QuickPopoverTest, StaysClosedWithALineInTheLogIfItsViewIsBroken) {
    static QStringList lines;
    lines.clear();
    const QtMessageHandler former = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext& context, const QString& text) {
            lines << QString::fromUtf8(context.category) + QLatin1String(": ") + text;
        });
    content_ = std::make_unique<test::SampleContent>(test::cards(1));
    make({.content = content_->model(), .view = QUrl(QStringLiteral("qrc:/missing.qml"))});
    popover_->show(QPoint(300, 0), QString());
    popover_->performClose();
    qInstallMessageHandler(former);
    EXPECT_FALSE(popover_->isShown());
    EXPECT_EQ(popover_->window(), nullptr);
    EXPECT_EQ(takeSignals(), Names{});
    EXPECT_TRUE(lines.join(QLatin1Char('\n')).contains(QLatin1String("missing.qml")));
}

TEST_F(QuickPopoverTest, LoadsWithoutAWarning) {
    static QStringList lines;
    lines.clear();
    const QtMessageHandler former = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString& text) { lines << text; });
    make(3);
    showAndWait();
    window().grabWindow();
    popover_->performClose();
    popover_.reset();
    qInstallMessageHandler(former);
    EXPECT_EQ(lines.join(QLatin1Char('\n')), QString());
}

TEST_F(QuickPopoverTest, DrawsBySoftware) {
    make();
    showAndWait();
    EXPECT_EQ(window().rendererInterface()->graphicsApi(), QSGRendererInterface::Software);
}

TEST_F(QuickPopoverTest, LiesBesideTheClick) {
    make();
    showAndWait();
    const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
    EXPECT_TRUE(available.contains(window().geometry()));
    EXPECT_NEAR(window().geometry().center().x(), 300, 1);
    popover_->performClose();
    popover_->show(QPoint(300, available.bottom()), QString());
    EXPECT_GT(window().y(), available.center().y() - window().height());
    EXPECT_EQ(window().geometry().bottom(), available.bottom() - 7);
}

TEST_F(QuickPopoverTest, KeepsItsDistanceWhenItsContentGrows) {
    make(2);
    const int bottom = QGuiApplication::primaryScreen()->availableGeometry().bottom();
    popover_->show(QPoint(300, bottom), QString());
    const int height = window().height();
    content_->model().cards()->setCards({test::comfortableCard()});
    EXPECT_TRUE(eventuallyInLoop([&] { return window().height() < height - 50; }));
    EXPECT_TRUE(eventuallyInLoop([&] { return window().geometry().bottom() == bottom - 7; }));
}

// As compositors that tile windows want those that shall float.
TEST_F(QuickPopoverTest, CanHaveNoOtherSizeThanThatOfItsContentWhereACompositorPlacesIt) {
    const auto hasOneSize = [this] {
        return window().minimumSize() == window().size() &&
               window().maximumSize() == window().size();
    };
    content_ = std::make_unique<test::SampleContent>(test::cards(2));
    make({.content = content_->model(), .compositorPlaces = [] { return true; }});
    popover_->show(QPoint(300, 0), QString());
    EXPECT_TRUE(hasOneSize());
    const int height = window().height();
    content_->model().cards()->setCards({test::comfortableCard()});
    EXPECT_TRUE(eventuallyInLoop([&] { return window().height() < height - 50; }));
    EXPECT_TRUE(hasOneSize());
}

// Window managers of X11 activate such a window less readily.
TEST_F(QuickPopoverTest, LimitsNoSizesWhereItPlacesItself) {
    make();
    popover_->show(QPoint(300, 0), QString());
    EXPECT_EQ(window().minimumSize(), QSize(0, 0));
    EXPECT_GT(window().maximumWidth(), window().width());
}

TEST_F(QuickPopoverTest, ShowsAllOfItsContentAtOnce) {
    make();
    content_->model().setShown(true);
    content_->model().cards()->setCards({test::fullestCard()});
    popover_->show(QPoint(300, 0), QString());
    const QSize size = window().size();
    EXPECT_TRUE(eventuallyInLoop([this] { return window().isActive(); }));
    window().grabWindow();
    for (int turn = 0; turn < 20; ++turn)
        QCoreApplication::processEvents();
    EXPECT_EQ(window().size(), size);
}

TEST_F(QuickPopoverTest, HasRoundCornersWhereWhatLiesBehindShowsThrough) {
    content_ = std::make_unique<test::SampleContent>(test::cards(1));
    bool blends = true;
    make({.content = content_->model(), .blendsWindows = [&blends] { return blends; }});
    showAndWait();
    EXPECT_EQ(window().color(), QColor(Qt::transparent));
    EXPECT_TRUE(window().requestedFormat().hasAlpha());
    const QColor round = window().grabWindow().pixelColor(0, 0);
    popover_->performClose();
    blends = false;
    showAndWait();
    const QImage square = window().grabWindow();
    EXPECT_NE(square.pixelColor(0, 0), round);
    EXPECT_EQ(square.pixelColor(0, 0), square.pixelColor(0, square.height() / 2));
}

TEST_F(QuickPopoverTest, ShowsTheLookThatWasSetBefore) {
    make().setAppearance(Appearance::dark);
    popover_->setTextScale(2);
    showAndWait();
    EXPECT_EQ(color("cardBackground"), colors::cardFill.dark);
    EXPECT_EQ(pixelSize("amount"), 60);
}

TEST_F(QuickPopoverTest, IsAWindowOfItsOwnKind) {
    make();
    showAndWait();
    EXPECT_TRUE(window().flags().testFlag(Qt::FramelessWindowHint));
    EXPECT_EQ(window().flags() & Qt::WindowType_Mask, Qt::Tool);
    EXPECT_EQ(window().title(), QStringLiteral("Brimwatch?"));
}

TEST_F(QuickPopoverTest, CanGoWhileItIsShown) {
    make();
    showAndWait();
    popover_.reset();
    for (int turn = 0; turn < 20; ++turn)
        QCoreApplication::processEvents();
    EXPECT_TRUE(QGuiApplication::allWindows().isEmpty());
}

}  // namespace
}  // namespace brimwatch
