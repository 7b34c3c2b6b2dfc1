#include "presentation/views/movable_row.h"

#include <QAccessible>
#include <QAccessibleActionInterface>
#include <QAccessibleObject>
#include <QQuickWindow>

namespace brimwatch {
namespace {

class MovableRowInterface final : public QAccessibleObject, public QAccessibleActionInterface {
  public:
    explicit MovableRowInterface(MovableRow& row) : QAccessibleObject(&row), row_(row) {}

    QAccessibleInterface* parent() const override;
    int childCount() const override { return 0; }
    QAccessibleInterface* child(int /*index*/) const override { return nullptr; }
    int indexOfChild(const QAccessibleInterface* /*child*/) const override { return -1; }
    QWindow* window() const override { return row_.window(); }
    QRect rect() const override;
    QAccessible::Role role() const override { return QAccessible::ListItem; }
    QAccessible::State state() const override;
    QString text(QAccessible::Text text) const override {
        return text == QAccessible::Name ? row_.name() : QString();
    }
    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }

    QStringList actionNames() const override {
        return {row_.moveUpText(), row_.moveDownText(), setFocusAction()};
    }
    QString localizedActionName(const QString& name) const override {
        return name == setFocusAction() ? QAccessibleActionInterface::localizedActionName(name)
                                        : name;
    }
    void doAction(const QString& name) override;
    QStringList keyBindingsForAction(const QString& /*name*/) const override { return {}; }

  private:
    MovableRow& row_;
};

// The nearest item around it that such a client knows of.
QAccessibleInterface* MovableRowInterface::parent() const {
    for (QQuickItem* item = row_.parentItem(); item != nullptr; item = item->parentItem()) {
        if (QAccessibleInterface* found = QAccessible::queryAccessibleInterface(item)) return found;
    }
    return QAccessible::queryAccessibleInterface(row_.window());
}

QRect MovableRowInterface::rect() const {
    if (row_.window() == nullptr) return {};
    const QRectF place = row_.mapRectToScene(row_.boundingRect());
    return {row_.window()->mapToGlobal(place.topLeft().toPoint()), place.size().toSize()};
}

QAccessible::State MovableRowInterface::state() const {
    QAccessible::State state;
    const bool isSeen = row_.isVisible() && row_.window() != nullptr && row_.window()->isVisible();
    state.invisible = !isSeen;
    state.focusable = true;
    state.focused = row_.hasActiveFocus();
    state.disabled = !row_.isEnabled();
    return state;
}

void MovableRowInterface::doAction(const QString& name) {
    if (name == row_.moveUpText()) emit row_.moveUpRequested();
    if (name == row_.moveDownText()) emit row_.moveDownRequested();
    if (name == setFocusAction()) row_.forceActiveFocus();
}

QAccessibleInterface* makeInterface(const QString& className, QObject* object) {
    auto* row = className == QLatin1String(MovableRow::staticMetaObject.className())
                    ? qobject_cast<MovableRow*>(object)
                    : nullptr;
    return row == nullptr ? nullptr : new MovableRowInterface(*row);
}

}  // namespace

MovableRow::MovableRow(QQuickItem* parent) : QQuickItem(parent) {
    // It would take the same one twice.
    [[maybe_unused]] static const bool isInstalled = [] {
        QAccessible::installFactory(makeInterface);
        return true;
    }();
}

}  // namespace brimwatch
