// Values that come over a message bus, which may be of any type.
#pragma once

#include <QDBusMessage>
#include <QDBusVariant>
#include <QVariant>
#include <optional>

namespace brimwatch {

// What stands in variants within variants.
inline QVariant unwrapped(QVariant value) {
    while (value.metaType() == QMetaType::fromType<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

// The value if it is of exactly that type: nothing is converted.
template <class Value>
std::optional<Value> valueOf(const QVariant& value) {
    if (value.metaType() != QMetaType::fromType<Value>()) return std::nullopt;
    return value.value<Value>();
}

// What an answer holds that is one variant, or an invalid value.
inline QVariant variantAnswer(const QDBusMessage& answer) {
    if (answer.type() != QDBusMessage::ReplyMessage || answer.signature() != QLatin1String("v"))
        return {};
    return unwrapped(answer.arguments().at(0));
}

}  // namespace brimwatch
