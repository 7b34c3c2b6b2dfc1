// What is to be seen and heard of the items of a scene.
#pragma once

#include <gtest/gtest.h>

#include <QAccessible>
#include <QCoreApplication>
#include <QQuickItem>
#include <QString>
#include <functional>
#include <ostream>

#include "harness/process.h"

// Else the tests print its bytes.
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace brimwatch::test {

inline bool eventuallyInLoop(const std::function<bool()>& condition) {
    return eventually([&condition] {
        QCoreApplication::processEvents();
        return condition();
    });
}

// What a screen reader is told of an item.
struct Spoken {
    QAccessible::Role role = QAccessible::NoRole;
    QString name;

    bool operator==(const Spoken&) const = default;
};

inline std::ostream& operator<<(std::ostream& out, const Spoken& spoken) {
    return out << spoken.role << " \"" << spoken.name.toStdString() << '"';
}

inline Spoken spoken(QQuickItem* item) {
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(item);
    if (interface == nullptr || interface->state().invisible) return {};
    return {interface->role(), interface->text(QAccessible::Name)};
}

}  // namespace brimwatch::test
