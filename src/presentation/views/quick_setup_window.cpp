#include "presentation/views/quick_setup_window.h"

#include <QGuiApplication>
#include <QLoggingCategory>
#include <QQmlEngine>
#include <QQuickItem>
#include <QScreen>
#include <utility>

#include "presentation/setup/setup_window_size.h"
#include "presentation/views/view_module.h"
#include "presentation/views/view_palette.h"

namespace brimwatch {
namespace {

Q_LOGGING_CATEGORY(viewsLog, "net.quillmoor.brimwatch.mac.views")

constexpr int unlimited = 16777215;  // the most that Qt takes

// Without a button to maximise it, as its width is fixed.
constexpr Qt::WindowFlags windowFlags = Qt::Window | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                        Qt::WindowSystemMenuHint | Qt::WindowMinimizeButtonHint |
                                        Qt::WindowCloseButtonHint;

}  // namespace

QuickSetupWindow::QuickSetupWindow(Surroundings surroundings)
    : surroundings_(std::move(surroundings)) {}

QuickSetupWindow::~QuickSetupWindow() = default;

std::optional<QRect> QuickSetupWindow::primaryScreen() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen == nullptr ? std::nullopt : std::optional(screen->availableGeometry());
}

void QuickSetupWindow::show(QWindow* parent) {
    if (!window_ && !makeWindow()) return;
    window_->setTransientParent(parent);
    if (window_->isVisible() && window_->windowState() != Qt::WindowMinimized) {
        window_->raise();
    } else {
        window_->showNormal();
    }
    window_->requestActivate();
}

void QuickSetupWindow::setAppearance(Appearance appearance) {
    appearance_ = appearance;
    if (palette_ != nullptr) palette_->setAppearance(appearance);
}

void QuickSetupWindow::setTextScale(double scale) {
    textScale_ = scale;
    if (palette_ != nullptr) palette_->setTextScale(scale);
}

bool QuickSetupWindow::makeWindow() {
    drawBySoftware();
    auto engine = std::make_unique<QQmlEngine>();
    ViewPalette& palette = preparedPalette(*engine);
    palette.setAppearance(appearance_);
    palette.setTextScale(textScale_);
    if (surroundings_.desktop != nullptr) palette.follow(*surroundings_.desktop);
    SetupViewModel& settings = surroundings_.settings;
    settings.setShown(true);
    auto window = std::make_unique<QQuickView>(engine.get(), nullptr);
    window->setTitle(QStringLiteral("Brimwatch?"));
    window->setFlags(windowFlags);
    window->setResizeMode(QQuickView::SizeRootObjectToView);
    window->setInitialProperties({{"model", QVariant::fromValue(&settings)}});
    window->setSource(QUrl(QStringLiteral("qrc:/qt/qml/Brimwatch/SetupView.qml")));
    if (window->status() != QQuickView::Ready) {
        qCWarning(viewsLog) << "The settings can't be made:" << window->errors();
        settings.setShown(false);
        return false;
    }
    QObject::connect(window.get(), &QWindow::visibleChanged, &settings, &SetupViewModel::setShown);
    takeSize(*window);
    engine_ = std::move(engine);
    window_ = std::move(window);
    palette_ = &palette;
    return true;
}

void QuickSetupWindow::takeSize(QQuickView& window) const {
    QQuickItem& root = *window.rootObject();
    root.setWidth(setupWindowWidth);
    layOut(root);
    const std::optional<QRect> screen = surroundings_.screen();
    const SetupWindowSize size =
        setupWindowSize(root.property("contentHeight").toDouble(),
                        screen ? std::optional<double>(screen->height()) : std::nullopt);
    const QSize content(static_cast<int>(setupWindowWidth), static_cast<int>(size.height));
    window.setMinimumSize(size.isResizable
                              ? QSize(content.width(), static_cast<int>(setupWindowMinimumHeight))
                              : content);
    window.setMaximumSize(size.isResizable ? QSize(content.width(), unlimited) : content);
    window.resize(content);
    // Its own height would otherwise go on following what is in it.
    root.setHeight(content.height());
    if (!screen) return;
    QRect place(QPoint(), content);
    place.moveCenter(screen->center());
    window.setPosition(place.topLeft());
}

}  // namespace brimwatch
