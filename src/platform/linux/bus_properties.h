// The properties of an object on a message bus, as far as its service tells them.
//
// Main thread.
#pragma once

#include <QString>
#include <QVariantMap>
#include <functional>

#include "platform/linux/bus_service.h"

namespace brimwatch {

// Reads the properties of that interface and hears of their changes until the service has another
// owner. `told` gets all of them first, then those that changed. To be called when the owner
// changes.
void watchProperties(BusService& service, const QString& path, const QString& interface,
                     const std::function<void(const QVariantMap& properties)>& told);

}  // namespace brimwatch
