// What stopped a publication, told apart as the publishers need it, and in words. Any thread.
#pragma once

#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "platform/key_store.h"
#include "platform/record_database.h"
#include "publish/publish_schedule.h"

namespace brimwatch {

namespace publication_failure {
struct Stopped {};  // it was no longer wanted
struct NoAccount {};
struct SharedKeyRefused {
    KeyStatus status;
};
struct Other {
    std::string description;
};
}  // namespace publication_failure

using PublicationFailure =
    std::variant<publication_failure::Stopped, publication_failure::NoAccount, CloudError,
                 publication_failure::SharedKeyRefused, publication_failure::Other>;

PublicationFailure publicationFailure(const std::exception_ptr& failure);

// How long the next send has to wait; nothing if it need not.
std::optional<PublishSchedule::Wait> waitAfter(const PublicationFailure& failure);

// What users of both kinds of phones are told of an error that passes; nothing for all others.
std::optional<std::string_view> passingErrorText(const CloudError& error);

// For the user.
std::string failureDescription(const std::exception_ptr& failure);
// For the log: a number or a type, and nothing of what was handled.
std::string failureSummary(const std::exception_ptr& failure);

}  // namespace brimwatch
