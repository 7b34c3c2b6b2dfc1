// The sheet of a link to an Android phone, with a publisher in the hands of a test.
#pragma once

#include <memory>

#include "presentation/phone_link_sheet.h"
#include "publish/phone_link_text.h"
#include "publish/publishers/phone_link_fixture.h"

namespace brimwatch::test {

class NotedClipboard : public Clipboard {
  public:
    void setSecretText(const QString& text) override { texts.push_back(text); }

    std::vector<QString> texts;
};

class PhoneLinkSheetFixture : public PhoneLinkFixture {
  protected:
    PhoneLinkSheet& open(PublishingRight right = PublishingRight::granted) {
        start(right);
        sheet_ = std::make_unique<PhoneLinkSheet>(publisher(), clipboard_, time_.sleeper());
        QObject::connect(sheet_.get(), &PhoneLinkSheet::dismissed, sheet_.get(),
                         [this] { ++dismissals_; });
        return *sheet_;
    }
    PhoneLinkSheet& openLinked() {
        store(key_);
        return open();
    }
    static QString textOf(const SymmetricKey& key) {
        return QString::fromStdString(phoneLinkText(key));
    }

    NotedClipboard clipboard_;
    int dismissals_ = 0;
    std::unique_ptr<PhoneLinkSheet> sheet_;
};

}  // namespace brimwatch::test
