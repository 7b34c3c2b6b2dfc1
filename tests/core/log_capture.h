// What is logged while it lives.
#pragma once

#include <QString>
#include <QtGlobal>
#include <string>
#include <utility>
#include <vector>

namespace brimwatch::test {

class LogCapture {
  public:
    using Message = std::pair<QtMsgType, std::string>;

    LogCapture() : former_(qInstallMessageHandler(&LogCapture::note)) {
        messages().clear();
        categories().clear();
    }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;
    ~LogCapture() { qInstallMessageHandler(former_); }

    // Of all such captures: there is one at a time.
    static std::vector<Message>& messages() {
        static std::vector<Message> noted;
        return noted;
    }

    // The categories of the messages, in the same order.
    static std::vector<std::string>& categories() {
        static std::vector<std::string> noted;
        return noted;
    }

  private:
    static void note(QtMsgType type, const QMessageLogContext& context, const QString& text) {
        messages().emplace_back(type, text.toStdString());
        categories().emplace_back(context.category != nullptr ? context.category : "");
    }

    QtMessageHandler former_;
};

}  // namespace brimwatch::test
