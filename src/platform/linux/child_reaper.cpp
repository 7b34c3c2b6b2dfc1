#include "platform/linux/child_reaper.h"

#include <QCoreApplication>
#include <QObject>
#include <QSocketNotifier>
#include <utility>

namespace brimwatch {
namespace {

// Lives until the child has ended, or as long as its parent.
class ChildReaper : public QObject {
  public:
    ChildReaper(ChildProcess child, QObject* parent)
        : QObject(parent),
          child_(std::move(child)),
          end_(child_.processDescriptor(), QSocketNotifier::Read) {
        connect(&end_, &QSocketNotifier::activated, this, &ChildReaper::reap);
    }

  private:
    void reap() {
        if (!child_.reapIfEnded()) return;
        end_.setEnabled(false);
        child_ = {};
        deleteLater();
    }

    ChildProcess child_;
    QSocketNotifier end_;
};

}  // namespace

void endChild(ChildProcess child) {
    child.terminate();
    QCoreApplication* application = QCoreApplication::instance();
    if (child.reapIfEnded() || application == nullptr) return;
    // The application owns it.
    static_cast<void>(new ChildReaper(std::move(child), application));
}

}  // namespace brimwatch
