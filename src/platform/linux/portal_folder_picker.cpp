#include "platform/linux/portal_folder_picker.h"

#include <QByteArray>
#include <QDBusArgument>
#include <QDBusError>
#include <QDBusObjectPath>
#include <QGuiApplication>
#include <QUrl>
#include <utility>

#include "platform/linux/bus_values.h"

namespace brimwatch {
namespace {

constexpr QLatin1String portalName("org.freedesktop.portal.Desktop");
constexpr QLatin1String portalPath("/org/freedesktop/portal/desktop");
constexpr QLatin1String chooserInterface("org.freedesktop.portal.FileChooser");
constexpr QLatin1String requestInterface("org.freedesktop.portal.Request");
constexpr quint32 firstVersionWithFolders = 3;
constexpr quint32 chosen = 0;

// As portals want it. Wayland has no such name for a window without another protocol.
QString nameOf(const QWindow& window) {
    if (QGuiApplication::platformName() != QLatin1String("xcb")) return {};
    return QStringLiteral("x11:%1").arg(window.winId(), 0, 16);
}

QString requestPath(const QString& uniqueName, const QString& token) {
    const QString sender = uniqueName.mid(1).replace(u'.', u'_');
    return QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender, token);
}

// By its bytes: a name need not be text. Nothing for a place on another machine.
std::optional<std::string> pathOf(const QUrl& folder) {
    const bool isHere = folder.host().isEmpty() || folder.host() == QLatin1String("localhost");
    if (!folder.isLocalFile() || !isHere) return std::nullopt;
    const QByteArray path = folder.path(QUrl::FullyEncoded).toLatin1();
    return QByteArray::fromPercentEncoding(path).toStdString();
}

std::optional<std::string> folderOf(const QDBusMessage& response) {
    const QVariantList arguments = response.arguments();
    if (arguments.at(0).toUInt() != chosen) return std::nullopt;
    const auto results = qdbus_cast<QVariantMap>(arguments.at(1));
    const QStringList uris = results.value(QStringLiteral("uris")).toStringList();
    return pathOf(QUrl(uris.value(0)));
}

bool isSlow(const QDBusMessage& error) {
    const QDBusError::ErrorType type = QDBusError(error).type();
    return type == QDBusError::NoReply || type == QDBusError::Timeout ||
           type == QDBusError::TimedOut;
}

}  // namespace

struct PortalFolderPicker::Question {
    QPointer<QWindow> parent;
    QString title;
    Picked picked;
    QString request = {};  // empty until the portal was asked
    QObject context;       // of the calls
};

PortalFolderPicker::PortalFolderPicker(BusConnection& sessionBus, FolderPicker& otherwise)
    : bus_(sessionBus), otherwise_(otherwise), portal_(sessionBus, portalName) {
    QObject::connect(&portal_, &BusService::ownerChanged, &portal_, [this] {
        portal_.listen({.interface = requestInterface, .name = QStringLiteral("Response")},
                       [this](const QDBusMessage& response) { hear(response); });
        // Its window is gone, and no answer will come.
        if (!question_ || question_->request.isEmpty()) return;
        const std::unique_ptr<Question> question = std::move(question_);
        question->picked(std::nullopt);
    });
}

PortalFolderPicker::~PortalFolderPicker() {
    withdraw();
}

void PortalFolderPicker::pick(QWindow& parent, const QString& title, Picked picked) {
    withdraw();
    question_ = std::make_unique<Question>();
    question_->parent = &parent;
    question_->title = title;
    question_->picked = std::move(picked);
    if (!portal_.isThere()) return askOtherwise();
    bus_.call({portal_.owner(),
               portalPath,
               QStringLiteral("org.freedesktop.DBus.Properties"),
               QStringLiteral("Get"),
               {QString(chooserInterface), QStringLiteral("version")}},
              &question_->context, [this](const QDBusMessage& answer) {
                  askPortal(valueOf<quint32>(variantAnswer(answer)).value_or(0));
              });
}

void PortalFolderPicker::askPortal(quint32 version) {
    if (version < firstVersionWithFolders || !question_->parent) return askOtherwise();
    const QString token = QStringLiteral("brimwatch%1").arg(++lastToken_);
    question_->request = requestPath(bus_.connection().baseService(), token);
    const QVariantMap options{{QStringLiteral("handle_token"), token},
                              {QStringLiteral("modal"), true},
                              {QStringLiteral("directory"), true}};
    bus_.call({portal_.owner(),
               portalPath,
               chooserInterface,
               QStringLiteral("OpenFile"),
               {nameOf(*question_->parent), question_->title, options}},
              &question_->context, [this](const QDBusMessage& answer) {
                  if (answer.type() == QDBusMessage::ErrorMessage) {
                      if (!isSlow(answer)) askOtherwise();
                  } else if (answer.signature() == QLatin1String("o")) {
                      // Old portals take a path of their own.
                      question_->request = answer.arguments().at(0).value<QDBusObjectPath>().path();
                  }
              });
}

void PortalFolderPicker::hear(const QDBusMessage& response) {
    if (!question_ || response.path() != question_->request) return;
    if (response.signature() != QLatin1String("ua{sv}")) return;
    const std::unique_ptr<Question> question = std::move(question_);
    question->picked(folderOf(response));
}

void PortalFolderPicker::askOtherwise() {
    const std::unique_ptr<Question> question = std::move(question_);
    if (!question->parent) return question->picked(std::nullopt);
    otherwise_.pick(*question->parent, question->title, std::move(question->picked));
}

void PortalFolderPicker::withdraw() {
    const std::unique_ptr<Question> question = std::move(question_);
    if (!question || question->request.isEmpty()) return;
    portal_.call(question->request, requestInterface, QStringLiteral("Close"), {},
                 [](const QDBusMessage&) {});
}

}  // namespace brimwatch
