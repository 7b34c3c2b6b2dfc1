#include "presentation/language_translator.h"

#include <QCoreApplication>

#include "support/language.h"

namespace brimwatch {

LanguageTranslator::LanguageTranslator(const HelperModel& model) : language_(&model.language()) {
    QCoreApplication::installTranslator(this);
    connect(&model, &HelperModel::languageChanged, this, [this, &model] {
        language_ = &model.language();
        // Only this tells everybody.
        QCoreApplication::removeTranslator(this);
        QCoreApplication::installTranslator(this);
    });
}

LanguageTranslator::~LanguageTranslator() {
    QCoreApplication::removeTranslator(this);
}

QString LanguageTranslator::translate(const char* /*context*/, const char* source,
                                      const char* /*disambiguation*/, int /*count*/) const {
    // Nothing: the source itself.
    if (language_->translations.empty()) return {};
    return QString::fromStdString(translatedText(source, *language_));
}

}  // namespace brimwatch
