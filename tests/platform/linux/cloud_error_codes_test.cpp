#include "platform/linux/cloud_error_codes.h"

#include <gtest/gtest.h>

#include <tuple>
#include <vector>

namespace brimwatch {
namespace {

struct Row {
    const char* text;
    int status;
    int code;
};

TEST(CloudErrorCodesTest, EachTextOfTheServerHasItsCode) {
    const std::vector<Row> rows = {
        {"ACCESS_DENIED", 403, 10},
        {"ATOMIC_ERROR", 400, 22},
        {"AUTHENTICATION_FAILED", 401, 9},
        {"AUTHENTICATION_REQUIRED", 421, 9},
        {"BAD_REQUEST", 400, 12},
        {"CONFLICT", 409, 14},
        {"EXISTS", 409, 14},
        {"INTERNAL_ERROR", 500, 1},
        {"NOT_FOUND", 404, 11},
        {"QUOTA_EXCEEDED", 413, 25},
        {"THROTTLED", 429, 7},
        {"TRY_AGAIN_LATER", 503, 6},
        {"VALIDATING_REFERENCE_ERROR", 412, 31},
        {"ZONE_NOT_FOUND", 404, 26},
        {"UNIQUE_FIELD_ERROR", 400, 19},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(errorCodeOfServer(row.text, row.status, UserTokenUse::sent), row.code)
            << row.text;
        // A record's error may come with the status of success.
        EXPECT_EQ(errorCodeOfServer(row.text, 200, UserTokenUse::sent), row.code) << row.text;
    }
}

TEST(CloudErrorCodesTest, AnUnknownTextGoesByTheStatus) {
    const std::vector<Row> rows = {{"NEW_ERROR", 200, 15}, {"NEW_ERROR", 400, 15},
                                   {"NEW_ERROR", 428, 15}, {"NEW_ERROR", 429, 7},
                                   {"NEW_ERROR", 499, 15}, {"NEW_ERROR", 500, 6},
                                   {"", 503, 6},           {"conflict", 409, 15}};
    for (const Row& row : rows)
        EXPECT_EQ(errorCodeOfServer(row.text, row.status, UserTokenUse::sent), row.code)
            << row.text << ' ' << row.status;
}

TEST(CloudErrorCodesTest, WithoutAUserItIsTheTokenOfTheBuildThatIsRefused) {
    EXPECT_EQ(errorCodeOfServer("AUTHENTICATION_FAILED", 401, UserTokenUse::none), 8);
    EXPECT_EQ(errorCodeOfServer("AUTHENTICATION_REQUIRED", 421, UserTokenUse::none), 9);
}

TEST(CloudErrorCodesTest, AStatusAloneTellsALittle) {
    const std::vector<std::pair<int, int>> rows = {{200, 4},  {204, 4},  {302, 4}, {399, 4},
                                                   {400, 15}, {404, 15}, {407, 4}, {429, 7},
                                                   {499, 15}, {500, 6},  {503, 6}, {599, 6}};
    for (const auto& [status, code] : rows)
        EXPECT_EQ(errorCodeOfStatus(status), code) << status;
}

TEST(CloudErrorCodesTest, NoWayToTheServerIsToldApartFromABadOne) {
    for (const auto error :
         {QNetworkReply::HostNotFoundError, QNetworkReply::NetworkSessionFailedError,
          QNetworkReply::TemporaryNetworkFailureError, QNetworkReply::UnknownNetworkError})
        EXPECT_EQ(errorCodeOfNetwork(error), 3) << error;
    for (const auto error :
         {QNetworkReply::ConnectionRefusedError, QNetworkReply::RemoteHostClosedError,
          QNetworkReply::SslHandshakeFailedError, QNetworkReply::ProxyConnectionRefusedError,
          QNetworkReply::ProxyNotFoundError, QNetworkReply::TimeoutError,
          QNetworkReply::OperationCanceledError})
        EXPECT_EQ(errorCodeOfNetwork(error), 4) << error;
}

TEST(CloudErrorCodesTest, ABadRequestForTheCallerMeansABadContainer) {
    EXPECT_EQ(errorCodeOfCaller(12), 5);
    EXPECT_EQ(errorCodeOfCaller(8), 8);
    EXPECT_EQ(errorCodeOfCaller(6), 6);
}

}  // namespace
}  // namespace brimwatch
