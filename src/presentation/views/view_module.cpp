#include "presentation/views/view_module.h"

#include <QCoreApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <utility>

#include "presentation/menu_content_model.h"
#include "presentation/views/view_palette.h"

// Made by the build. Of a static library only what is named gets into a program.
extern void qml_register_types_Brimwatch();  // NOLINT(readability-identifier-naming)

namespace brimwatch {

namespace {

void polish(QQuickItem& item) {
    for (QQuickItem* child : item.childItems())
        polish(*child);
    item.ensurePolished();
}

}  // namespace

void drawBySoftware() {
    static bool isDecided = false;
    if (std::exchange(isDecided, true)) return;
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
}

ViewPalette& preparedPalette(QQmlEngine& engine) {
    qml_register_types_Brimwatch();
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    const int id = qmlTypeId("Brimwatch", 1, 0, "ViewPalette");
    auto& palette = *engine.singletonInstance<ViewPalette*>(id);
    QCoreApplication::instance()->installEventFilter(&palette);
    return palette;
}

void layOut(QQuickItem& root) {
    constexpr int passes = 4;  // a text that wraps makes its column higher, and that the next one
    for (int pass = 0; pass < passes; ++pass)
        polish(root);
}

}  // namespace brimwatch
