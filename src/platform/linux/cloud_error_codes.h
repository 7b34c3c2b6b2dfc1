// The errors of the cloud's web interface in the numbers of CKError: three tables.
//
// What the provider leaves open is decided in these tables and nowhere else.
#pragma once

#include <QNetworkReply>
#include <string_view>

namespace brimwatch {

// Whether the request said who the user is.
enum class UserTokenUse { sent, none };

// Of the text `serverErrorCode` in an answer with that status.
int errorCodeOfServer(std::string_view serverErrorCode, int status, UserTokenUse userToken);
// Of a status whose body tells nothing.
int errorCodeOfStatus(int status);
// Where there was no answer at all.
int errorCodeOfNetwork(QNetworkReply::NetworkError error);
// Of the question who the user is: a build whose container, environment or API token the server
// does not know gets there what it gets for a request in bad form.
int errorCodeOfCaller(int code);

}  // namespace brimwatch
