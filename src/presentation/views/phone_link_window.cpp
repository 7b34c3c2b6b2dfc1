#include "presentation/views/phone_link_window.h"

#include <QLoggingCategory>
#include <QQmlEngine>
#include <QQuickItem>
#include <utility>

#include "presentation/views/view_module.h"
#include "presentation/views/view_palette.h"

namespace brimwatch {
namespace {

Q_LOGGING_CATEGORY(viewsLog, "net.quillmoor.brimwatch.mac.views")

// As large as what it holds, and no larger.
void followSize(QQuickView& window) {
    const QQuickItem& root = *window.rootObject();
    const QSize size(qRound(root.implicitWidth()), qRound(root.implicitHeight()));
    window.setMinimumSize(size);
    window.setMaximumSize(size);
    window.resize(size);
}

}  // namespace

PhoneLinkWindow::PhoneLinkWindow(PhoneLinkSheet& sheet, const DesktopAppearance* desktop)
    : sheet_(sheet), desktop_(desktop) {}

PhoneLinkWindow::~PhoneLinkWindow() = default;

void PhoneLinkWindow::show(QWindow* parent) {
    // Before the window is made: it is placed by the size that it has then.
    sheet_.appear();
    if (!window_ && !makeWindow()) return;
    window_->setTransientParent(parent);
    // What a window blocks is settled when it is shown.
    if (!window_->isVisible())
        window_->setModality(parent != nullptr ? Qt::WindowModal : Qt::NonModal);
    window_->show();
    window_->raise();
    window_->requestActivate();
}

void PhoneLinkWindow::setAppearance(Appearance appearance) {
    appearance_ = appearance;
    if (palette_ != nullptr) palette_->setAppearance(appearance);
}

void PhoneLinkWindow::setTextScale(double scale) {
    textScale_ = scale;
    if (palette_ != nullptr) palette_->setTextScale(scale);
}

bool PhoneLinkWindow::makeWindow() {
    drawBySoftware();
    auto engine = std::make_unique<QQmlEngine>();
    ViewPalette& palette = preparedPalette(*engine);
    palette.setAppearance(appearance_);
    palette.setTextScale(textScale_);
    if (desktop_ != nullptr) palette.follow(*desktop_);
    auto window = std::make_unique<QQuickView>(engine.get(), nullptr);
    window->setTitle(QStringLiteral("Brimwatch?"));
    window->setFlags(Qt::Dialog);
    window->setResizeMode(QQuickView::SizeRootObjectToView);
    window->setInitialProperties({{"model", QVariant::fromValue(&sheet_)}});
    window->setSource(QUrl(QStringLiteral("qrc:/qt/qml/Brimwatch/PhoneLinkSheet.qml")));
    if (window->status() != QQuickView::Ready) {
        qCWarning(viewsLog) << "The sheet can't be made:" << window->errors();
        return false;
    }
    QQuickItem* const root = window->rootObject();
    QQuickView* const view = window.get();
    QObject::connect(root, SIGNAL(dismissed()), view, SLOT(close()));
    QObject::connect(root, &QQuickItem::implicitHeightChanged, view, [view] { followSize(*view); });
    followSize(*view);
    engine_ = std::move(engine);
    window_ = std::move(window);
    palette_ = &palette;
    return true;
}

}  // namespace brimwatch
