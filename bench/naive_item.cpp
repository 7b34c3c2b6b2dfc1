// The anchor for what the flying rocket costs: an item of the panel that sends, ten times a second,
// a picture in two sizes, 20 and 40 pixels, whether or not it differs from the last one.
//
//   naive_item WEEKLY [REMAINING]
//
// The pictures are those that the program draws.

#include <QCoreApplication>
#include <QDBusAbstractAdaptor>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QTimer>
#include <QtEndian>
#include <array>
#include <iostream>
#include <random>

#include "presentation/menu_bar_motion.h"
#include "presentation/menu_bar_renderer.h"
#include "presentation/menu_bar_rocket.h"

namespace {

struct Pixmap {
    int width = 0;
    int height = 0;
    QByteArray bytes;

    bool operator==(const Pixmap&) const = default;
};

QDBusArgument& operator<<(QDBusArgument& argument, const Pixmap& pixmap) {
    argument.beginStructure();
    argument << pixmap.width << pixmap.height << pixmap.bytes;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, Pixmap& pixmap) {
    argument.beginStructure();
    argument >> pixmap.width >> pixmap.height >> pixmap.bytes;
    argument.endStructure();
    return argument;
}

}  // namespace

Q_DECLARE_METATYPE(Pixmap)
Q_DECLARE_METATYPE(QList<Pixmap>)

namespace {

using namespace brimwatch;

Pixmap pixmapOf(const QImage& picture) {
    const QImage plain = picture.convertToFormat(QImage::Format_ARGB32);
    Pixmap pixmap{plain.width(), plain.height(),
                  QByteArray(plain.sizeInBytes(), Qt::Uninitialized)};
    qToBigEndian<quint32>(plain.constBits(), plain.sizeInBytes() / 4, pixmap.bytes.data());
    return pixmap;
}

class NaiveItem : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category MEMBER category_)
    Q_PROPERTY(QString Id MEMBER id_)
    Q_PROPERTY(QString Title MEMBER id_)
    Q_PROPERTY(QString Status MEMBER status_)
    Q_PROPERTY(QString IconName MEMBER none_)
    Q_PROPERTY(QList<Pixmap> IconPixmap MEMBER pixmaps_)
    Q_PROPERTY(bool ItemIsMenu MEMBER isMenu_)

  public:
    NaiveItem(double weekly, double remaining) : weekly_(weekly), remaining_(remaining) {
        clock_.start();
        timer_.setInterval(100);
        connect(&timer_, &QTimer::timeout, this, &NaiveItem::paint);
        timer_.start();
        paint();
    }

  signals:
    void NewIcon();

  private:
    void paint() {
        motion_.step(static_cast<double>(clock_.restart()) / 1000, weekly_);
        const MenuBarIcon icon{remaining_, motion_.angle, drawShake(weekly_, random_)};
        pixmaps_ = {pixmapOf(*small_.render(icon, Qt::white, 1)),
                    pixmapOf(*large_.render(icon, Qt::white, 2))};
        emit NewIcon();
    }

    double weekly_;
    double remaining_;
    QString category_ = QStringLiteral("ApplicationStatus");
    QString id_ = QStringLiteral("naive");
    QString status_ = QStringLiteral("Active");
    QString none_;
    bool isMenu_ = false;
    QList<Pixmap> pixmaps_;
    MenuBarRenderer small_{*sharedRocket()};
    MenuBarRenderer large_{*sharedRocket()};
    MenuBarMotion motion_;
    std::mt19937_64 random_{1};
    QElapsedTimer clock_;
    QTimer timer_;
};

}  // namespace

int main(int count, char** arguments) {
    const QGuiApplication application(count, arguments);
    qDBusRegisterMetaType<Pixmap>();
    qDBusRegisterMetaType<QList<Pixmap>>();
    const double weekly = count > 1 ? std::atof(arguments[1]) : 1;
    NaiveItem item(weekly, count > 2 ? std::atof(arguments[2]) : weekly);
    QDBusConnection bus = QDBusConnection::sessionBus();
    const QString path = QStringLiteral("/StatusNotifierItem");
    bus.registerObject(path, &item,
                       QDBusConnection::ExportAllProperties | QDBusConnection::ExportAllSignals);
    const QString watcher = QStringLiteral("org.kde.StatusNotifierWatcher");
    QDBusMessage call =
        QDBusMessage::createMethodCall(watcher, QStringLiteral("/StatusNotifierWatcher"), watcher,
                                       QStringLiteral("RegisterStatusNotifierItem"));
    call << bus.baseService();
    if (bus.call(call).type() == QDBusMessage::ErrorMessage) {
        std::cerr << "no panel takes the item\n";
        return EXIT_FAILURE;
    }
    return QGuiApplication::exec();
}

#include "naive_item.moc"
