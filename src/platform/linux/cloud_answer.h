// What an answer of the cloud's web interface means: the value it holds, or the error in the
// numbers of CKError.
//
// An error is told by the text `serverErrorCode` in the body, else by the status, else by what the
// network says. A description is a short line; it never holds the address, which has the tokens in
// it, nor anything in which a server repeats the user's token. Pure functions.
#pragma once

#include <string>
#include <string_view>
#include <tl/expected.hpp>

#include "platform/linux/http_exchange.h"
#include "platform/record_database.h"
#include "support/json_value.h"
#include "support/secret_bytes.h"

namespace brimwatch {

struct CloudRefusal {
    CloudError error;
    std::string serverErrorCode = {};
    std::string redirectUrl = {};  // where the user can sign in
    std::string supportId = {};    // for who asks the provider what happened
};

struct CloudReply {
    JsonObject body = {};
    int status = 0;
    SecretBytes userToken = {};  // that was sent; empty if none was
};

// An answer with `records` is a reply, whatever its status: each of the records tells of itself.
using CloudAnswer = tl::expected<CloudReply, CloudRefusal>;
CloudAnswer readCloudAnswer(const HttpAnswer& answer, const SecretBytes& userToken);

// The error that an entry of a reply tells, in the place of a record.
CloudRefusal refusalOf(const JsonObject& entry, const CloudReply& reply);

// The entry of that record in an answer, or nullptr.
const JsonObject* recordEntry(const JsonObject& body, std::string_view recordName);
bool isError(const JsonObject& entry);
bool isDeleted(const JsonObject& entry);
// An entry that is no error. A payload that is not bytes is absent.
CloudRecord recordOf(const JsonObject& entry);
// Whether the entry has a field of that payload, bytes or not.
bool hasPayload(const JsonObject& entry);

}  // namespace brimwatch
