// Texts in the language of the user. The Korean text is the key of its translation, and is what is
// read where there is none. Main thread.
#pragma once

#include <QCoreApplication>
#include <QString>
#include <string>
#include <string_view>

namespace brimwatch {

inline QString translated(const char* text) {
    return QCoreApplication::translate("Brimwatch", text);
}

inline QString translated(std::string_view text) {
    return translated(std::string(text).c_str());
}

}  // namespace brimwatch
