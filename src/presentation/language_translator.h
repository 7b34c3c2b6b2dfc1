// Gives Qt the texts of the language that the user has chosen, wherever `tr`, `qsTr` or
// `translated` ask for one; also texts that were put together from a key and what stands in its
// places.
//
// A new choice counts at once, and every object is told by `QEvent::LanguageChange` of the
// application. There has to be an application, before and after it. Main thread.
#pragma once

#include <QTranslator>

#include "core/helper_model.h"

namespace brimwatch {

class LanguageTranslator final : public QTranslator {
  public:
    // Those that show texts of the model have to be connected to it later than this.
    explicit LanguageTranslator(const HelperModel& model);
    LanguageTranslator(const LanguageTranslator&) = delete;
    LanguageTranslator& operator=(const LanguageTranslator&) = delete;
    ~LanguageTranslator() override;

    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* source, const char* disambiguation,
                      int count) const override;

  private:
    const Language* language_;
};

}  // namespace brimwatch
