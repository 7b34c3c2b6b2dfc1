// Finding items of a scene by their identifiers.
#pragma once

#include <QQuickItem>
#include <QString>
#include <vector>

namespace brimwatch::test {

inline void collectItems(QQuickItem* root, const QString& name, std::vector<QQuickItem*>& found) {
    if (root->objectName() == name) found.push_back(root);
    for (QQuickItem* child : root->childItems())
        collectItems(child, name, found);
}

// From top to bottom.
inline std::vector<QQuickItem*> findItems(QQuickItem* root, const char* name) {
    std::vector<QQuickItem*> found;
    collectItems(root, QString::fromUtf8(name), found);
    return found;
}

// The first one, or none.
inline QQuickItem* findItem(QQuickItem* root, const char* name) {
    const std::vector<QQuickItem*> found = findItems(root, name);
    return found.empty() ? nullptr : found.front();
}

}  // namespace brimwatch::test
