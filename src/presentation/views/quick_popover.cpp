#include "presentation/views/quick_popover.h"

#include <QCursor>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickView>
#include <QScreen>
#include <QVariantMap>
#include <utility>
#include <vector>

#include "presentation/views/popover_placement.h"
#include "presentation/views/popover_window.h"
#include "presentation/views/view_module.h"
#include "presentation/views/view_palette.h"

namespace brimwatch {
namespace {

Q_LOGGING_CATEGORY(viewsLog, "net.quillmoor.brimwatch.mac.views")

std::vector<ScreenPlace> screenPlaces() {
    std::vector<ScreenPlace> places;
    for (const QScreen* screen : QGuiApplication::screens()) {
        places.push_back({.geometry = screen->geometry(),
                          .available = screen->availableGeometry(),
                          .pixelRatio = screen->devicePixelRatio()});
    }
    return places;
}

// In pixels of the screen.
QPoint cursorPlace() {
    const QPoint place = QCursor::pos();
    const QScreen* screen = QGuiApplication::screenAt(place);
    if (screen == nullptr) screen = QGuiApplication::primaryScreen();
    const QPoint corner = screen->geometry().topLeft();
    return corner + (place - corner) * screen->devicePixelRatio();
}

// Qt knows a token by the environment alone, where its Wayland plugin looks while it asks for the
// focus; the token is there for no longer than that. Nothing is started meanwhile, as that is done
// on this thread. Other threads may read other variables: those of Qt wait at its lock, and for the
// rest the C library replaces its list without freeing what they may be looking at.
constexpr const char* tokenVariable = "XDG_ACTIVATION_TOKEN";

}  // namespace

QuickPopover::QuickPopover(Surroundings surroundings) : surroundings_(std::move(surroundings)) {}

QuickPopover::~QuickPopover() = default;

void QuickPopover::show(std::optional<QPoint> click, const QString& activationToken) {
    if (state_ == State::shown) return activate(activationToken);
    if (state_ != State::closed || (!window_ && !makeWindow())) return;
    state_ = State::opening;
    click_ = click ? *click : cursorPlace();
    emit willShow();
    surroundings_.content.setShown(true);
    window_->rootObject()->setProperty("rounded", surroundings_.blendsWindows());
    window_->settle();
    place();
    window_->show();
    activate(activationToken);
    state_ = State::shown;
    emit didShow();
}

void QuickPopover::performClose() {
    if (state_ != State::shown) return;
    state_ = State::closing;
    emit willClose();
    window_->hide();
    surroundings_.content.setShown(false);
    state_ = State::closed;
    emit didClose();
}

void QuickPopover::setAppearance(Appearance appearance) {
    appearance_ = appearance;
    if (palette_ != nullptr) palette_->setAppearance(appearance);
}

void QuickPopover::setTextScale(double scale) {
    textScale_ = scale;
    if (palette_ != nullptr) palette_->setTextScale(scale);
}

QQuickView* QuickPopover::window() const {
    return window_.get();
}

bool QuickPopover::makeWindow() {
    drawBySoftware();
    auto engine = std::make_unique<QQmlEngine>();
    ViewPalette& palette = preparedPalette(*engine);
    palette.setAppearance(appearance_);
    palette.setTextScale(textScale_);
    if (surroundings_.desktop != nullptr) palette.follow(*surroundings_.desktop);
    auto window = std::make_unique<PopoverWindow>(engine.get());
    window->setInitialProperties({{"model", QVariant::fromValue(&surroundings_.content)}});
    window->setSource(surroundings_.view);
    if (window->status() != QQuickView::Ready) {
        qCWarning(viewsLog) << "The popover can't be made:" << window->errors();
        return false;
    }
    if (surroundings_.compositorPlaces()) window->forbidOtherSizes();
    connect(window.get(), &PopoverWindow::dismissed, this, &QuickPopover::performClose);
    connect(window.get(), &QWindow::heightChanged, this, &QuickPopover::place);
    engine_ = std::move(engine);
    window_ = std::move(window);
    palette_ = &palette;
    return true;
}

void QuickPopover::activate(const QString& token) {
    const bool isOffered = !token.isEmpty() && qputenv(tokenVariable, token.toUtf8());
    surroundings_.activate(*window_);
    if (isOffered) qunsetenv(tokenVariable);
}

void QuickPopover::place() {
    if (surroundings_.compositorPlaces()) return;
    const QPoint place = popoverPlace(click_, window_->size(), screenPlaces());
    if (QScreen* screen = QGuiApplication::screenAt(place)) window_->setScreen(screen);
    window_->setPosition(place);
}

}  // namespace brimwatch
