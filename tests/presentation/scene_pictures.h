// For programs that draw what the views look like, each scene light and dark.
#pragma once

#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QString>
#include <cstdlib>
#include <iostream>

#include "presentation/appearance.h"

namespace brimwatch::test {

// Of all scenes, as NAME-light.png and NAME-dark.png; gives the status for `main`. `draw` gets a
// scene and an appearance, and gives the picture, a null one if that failed.
template <class Scenes, class Draw>
int drawScenes(const QString& folder, const Scenes& scenes, Draw draw) {
    if (!QDir().mkpath(folder)) return EXIT_FAILURE;
    for (const auto& scene : scenes) {
        for (const Appearance appearance : {Appearance::light, Appearance::dark}) {
            const QImage picture = draw(scene, appearance);
            const char* const suffix = appearance == Appearance::dark ? "-dark.png" : "-light.png";
            const QString file = folder + u'/' + scene.name + QLatin1String(suffix);
            if (picture.isNull() || !picture.save(file)) {
                std::cerr << qPrintable(scene.name) << " could not be drawn\n";
                return EXIT_FAILURE;
            }
        }
    }
    return EXIT_SUCCESS;
}

// The `main` of a program that gets the folder for its pictures.
template <class DrawAll>
int drawOnCommand(int argumentCount, char** arguments, DrawAll drawAll) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    const QGuiApplication application(argumentCount, arguments);
    if (argumentCount == 2) return drawAll(QString::fromLocal8Bit(arguments[1]));
    std::cerr << "usage: " << arguments[0] << " FOLDER\n";
    return 2;
}

}  // namespace brimwatch::test
