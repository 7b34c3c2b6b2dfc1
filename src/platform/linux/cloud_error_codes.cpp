#include "platform/linux/cloud_error_codes.h"

#include <algorithm>
#include <array>

#include "platform/record_database.h"

namespace brimwatch {
namespace {

using namespace cloud_error_code;

struct ServerCode {
    std::string_view text;
    int code;
};

constexpr std::array serverCodes = {
    ServerCode{"ACCESS_DENIED", permissionFailure},
    ServerCode{"ATOMIC_ERROR", batchRequestFailed},
    ServerCode{"AUTHENTICATION_REQUIRED", notAuthenticated},
    ServerCode{"BAD_REQUEST", invalidArguments},
    ServerCode{"CONFLICT", serverRecordChanged},
    ServerCode{"EXISTS", serverRecordChanged},
    ServerCode{"INTERNAL_ERROR", internalError},
    ServerCode{"NOT_FOUND", unknownItem},
    ServerCode{"QUOTA_EXCEEDED", quotaExceeded},
    ServerCode{"THROTTLED", requestRateLimited},
    // Not `zoneBusy`: that makes a publisher overwrite a record that may exist.
    ServerCode{"TRY_AGAIN_LATER", serviceUnavailable},
    ServerCode{"VALIDATING_REFERENCE_ERROR", referenceViolation},
    ServerCode{"ZONE_NOT_FOUND", zoneNotFound},
    ServerCode{"UNIQUE_FIELD_ERROR", constraintViolation},
};

constexpr int firstError = 400;
constexpr int firstServerError = 500;
constexpr int proxyWantsUser = 407;
constexpr int tooManyRequests = 429;

int errorCodeOfErrorStatus(int status) {
    if (status >= firstServerError) return serviceUnavailable;
    return status == tooManyRequests ? requestRateLimited : serverRejectedRequest;
}

}  // namespace

int errorCodeOfServer(std::string_view serverErrorCode, int status, UserTokenUse userToken) {
    // Without a user it can only be the build's own token that is refused.
    if (serverErrorCode == "AUTHENTICATION_FAILED")
        return userToken == UserTokenUse::sent ? notAuthenticated : missingEntitlement;
    const auto* const known =
        std::find_if(serverCodes.begin(), serverCodes.end(),
                     [&](const ServerCode& entry) { return entry.text == serverErrorCode; });
    return known != serverCodes.end() ? known->code : errorCodeOfErrorStatus(status);
}

int errorCodeOfStatus(int status) {
    // A redirect, a proxy, or the page of a network that wants the user to sign in first.
    if (status < firstError || status == proxyWantsUser) return networkFailure;
    return errorCodeOfErrorStatus(status);
}

int errorCodeOfNetwork(QNetworkReply::NetworkError error) {
    switch (error) {
        case QNetworkReply::HostNotFoundError:
        case QNetworkReply::NetworkSessionFailedError:
        case QNetworkReply::TemporaryNetworkFailureError:
        case QNetworkReply::UnknownNetworkError:
            return networkUnavailable;
        default:
            return networkFailure;
    }
}

int errorCodeOfCaller(int code) {
    return code == invalidArguments ? badContainer : code;
}

}  // namespace brimwatch
