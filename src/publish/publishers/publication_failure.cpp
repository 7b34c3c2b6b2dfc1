#include "publish/publishers/publication_failure.h"

#include <cxxabi.h>

#include <cstdlib>
#include <memory>
#include <typeinfo>

#include "publish/limits_cloud.h"
#include "publish/phone_keychain.h"
#include "publish/publishers/cloud_failure.h"
#include "publish/shared_key.h"

namespace brimwatch {
namespace {

using namespace publication_failure;

constexpr const char* unknownFailureText = "작업을 완료할 수 없습니다.";

// Without the namespaces and classes around it.
std::string typeName(const std::type_info& type) {
    int status = 0;
    const std::unique_ptr<char, decltype(&std::free)> name(
        abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), &std::free);
    const std::string full = status == 0 ? name.get() : type.name();
    const std::size_t colon = full.rfind(':');
    return colon == std::string::npos ? full : full.substr(colon + 1);
}

std::optional<PublishSchedule::Wait> waitOf(const Stopped& /*failure*/) {
    return std::nullopt;
}

std::optional<PublishSchedule::Wait> waitOf(const NoAccount& /*failure*/) {
    return PublishSchedule::noAccountWait;
}

std::optional<PublishSchedule::Wait> waitOf(const CloudError& error) {
    return PublishSchedule::cloudErrorWait(error.retryAfterSeconds);
}

std::optional<PublishSchedule::Wait> waitOf(const SharedKeyRefused& /*failure*/) {
    return PublishSchedule::keychainWait;
}

std::optional<PublishSchedule::Wait> waitOf(const Other& /*failure*/) {
    return PublishSchedule::otherFailureWait;
}

}  // namespace

PublicationFailure publicationFailure(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const LimitsCloud::PublicationStopped&) {
        return Stopped{};
    } catch (const LimitsCloud::Failure& thrown) {
        if (thrown.reason() == LimitsCloud::Failure::Reason::noAccount) return NoAccount{};
        return Other{thrown.what()};
    } catch (const CloudFailure& thrown) {
        return thrown.error();
    } catch (const SharedKey::Failure& thrown) {
        return SharedKeyRefused{thrown.status()};
    } catch (...) {
        return Other{failureDescription(failure)};
    }
}

std::optional<PublishSchedule::Wait> waitAfter(const PublicationFailure& failure) {
    return std::visit([](const auto& kind) { return waitOf(kind); }, failure);
}

std::optional<std::string_view> passingErrorText(const CloudError& error) {
    switch (error.code) {
        case cloud_error_code::serviceUnavailable:
        case cloud_error_code::requestRateLimited:
        case cloud_error_code::zoneBusy:
            return "지금은 보낼 수 없어요. 잠시 뒤 다시 보내요.";
        case cloud_error_code::networkUnavailable:
        case cloud_error_code::networkFailure:
            return "인터넷에 연결되지 않았어요. 연결되면 다시 보내요.";
        default:
            return std::nullopt;
    }
}

std::string failureDescription(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const std::exception& thrown) {
        return thrown.what();
    } catch (...) {
        return unknownFailureText;
    }
}

std::string failureSummary(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const CloudFailure& thrown) {
        return "CloudKit 오류 " + std::to_string(thrown.error().code);
    } catch (const PhoneKeychain::Failure& thrown) {
        return "키체인 오류 " + std::to_string(thrown.status());
    } catch (const std::exception& thrown) {
        return typeName(typeid(thrown));
    } catch (...) {
        return unknownFailureText;
    }
}

}  // namespace brimwatch
