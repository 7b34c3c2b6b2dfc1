#include "platform/spawn.h"

#include <QDebug>
#include <exception>
#include <utility>

namespace brimwatch {
namespace {

QCoro::Task<> logWhatEscapes(QCoro::Task<> task) {
    try {
        co_await std::move(task);
    } catch (const std::exception& exception) {
        qWarning("A task ended with an exception: %s", exception.what());
    } catch (...) {
        qWarning("A task ended with an exception");
    }
}

}  // namespace

void spawn(QCoro::Task<> task) {
    logWhatEscapes(std::move(task));
}

}  // namespace brimwatch
