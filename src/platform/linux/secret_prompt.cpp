#include "platform/linux/secret_prompt.h"

#include <QDBusPendingCall>
#include <QTimer>
#include <utility>

namespace brimwatch {
namespace {

constexpr QLatin1String service("org.freedesktop.secrets");
constexpr QLatin1String promptInterface("org.freedesktop.Secret.Prompt");

}  // namespace

SecretPrompt::SecretPrompt(QDBusConnection bus, QString path)
    : bus_(std::move(bus)),
      path_(std::move(path)),
      service_(service, bus_, QDBusServiceWatcher::WatchForUnregistration) {
    bus_.connect(service, path_, promptInterface, QStringLiteral("Completed"), this,
                 SLOT(complete(QDBusMessage)));
    connect(&service_, &QDBusServiceWatcher::serviceUnregistered, this,
            [this] { end(key_status::notAvailable); });
}

SecretPrompt::~SecretPrompt() {
    bus_.disconnect(service, path_, promptInterface, QStringLiteral("Completed"), this,
                    SLOT(complete(QDBusMessage)));
}

KeyStatus SecretPrompt::show(std::chrono::milliseconds timeOut) {
    QDBusMessage call =
        QDBusMessage::createMethodCall(service, path_, promptInterface, QStringLiteral("Prompt"));
    call.setArguments({QString()});
    bus_.asyncCall(call);
    QTimer late;
    late.setSingleShot(true);
    connect(&late, &QTimer::timeout, this, [this] { end(key_status::userCanceled); });
    late.start(timeOut);
    if (!isOver_) loop_.exec(QEventLoop::ExcludeUserInputEvents);
    return status_;
}

void SecretPrompt::complete(const QDBusMessage& signal) {
    const bool isAnswered =
        signal.signature() == QLatin1String("bv") && !signal.arguments().at(0).toBool();
    end(isAnswered ? key_status::success : key_status::userCanceled);
}

void SecretPrompt::end(KeyStatus status) {
    if (isOver_) return;
    isOver_ = true;
    status_ = status;
    loop_.quit();
}

}  // namespace brimwatch
