#include "platform/linux/cloud_answer.h"

#include <QByteArray>
#include <QString>
#include <cmath>
#include <optional>
#include <utility>

#include "platform/linux/cloud_error_codes.h"
#include "support/json_reader.h"

namespace brimwatch {
namespace {

constexpr const char* payloadField = "payload";
constexpr int firstRedirect = 300;
constexpr int firstError = 400;

std::string_view textOf(const JsonObject& object, std::string_view key) {
    const JsonValue* value = object.find(key);
    const std::string* text = value != nullptr ? value->string() : nullptr;
    return text != nullptr ? *text : std::string_view();
}

std::string_view view(const QByteArray& bytes) {
    return {bytes.constData(), static_cast<std::size_t>(bytes.size())};
}

std::optional<double> usableSeconds(const JsonNumber& number) {
    const double seconds = number.toDouble();
    if (!std::isfinite(seconds) || seconds < 0) return std::nullopt;
    return seconds;
}

std::optional<double> retryAfter(const JsonObject& dictionary) {
    const JsonValue* value = dictionary.find("retryAfter");
    if (value == nullptr || value->number() == nullptr) return std::nullopt;
    return usableSeconds(*value->number());
}

// Whole seconds only: a date would be one of the server's clock.
std::optional<double> retryAfter(const QByteArray& header) {
    bool isNumber = false;
    const uint seconds = header.trimmed().toUInt(&isNumber);
    if (!isNumber) return std::nullopt;
    return seconds;
}

CloudRefusal failed(int code, std::string description) {
    return {.error = {.code = code, .description = std::move(description)}};
}

CloudRefusal refusalByStatus(const HttpAnswer& answer) {
    CloudRefusal refusal =
        failed(errorCodeOfStatus(answer.status),
               "서버의 답을 읽지 못했어요 (HTTP " + std::to_string(answer.status) + ").");
    refusal.error.retryAfterSeconds = retryAfter(answer.retryAfter);
    return refusal;
}

// Also as it stands in an address, or as what is read there where "+" means a blank.
bool repeats(std::string_view text, const SecretBytes& secret) {
    if (secret.empty()) return false;
    QByteArray plain = QByteArray::fromPercentEncoding(
        QByteArray(text.data(), static_cast<qsizetype>(text.size())));
    plain.replace(' ', '+');  // a token has no blank
    return text.find(secret.view()) != std::string_view::npos ||
           view(plain).find(secret.view()) != std::string_view::npos;
}

// A text of a server as it may stand in a log or a window.
std::string presentable(std::string_view text, const SecretBytes& secret) {
    constexpr qsizetype longest = 300;
    if (repeats(text, secret)) return "(…)";
    QString line =
        QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())).left(longest);
    for (QChar& character : line) {
        if (!character.isPrint()) character = QLatin1Char(' ');
    }
    return line.toStdString();
}

// An id is made of hexadecimal digits and hyphens.
std::string supportId(std::string_view text) {
    constexpr std::size_t longest = 64;
    const bool isId = text.size() <= longest &&
                      text.find_first_not_of("0123456789abcdefABCDEF-") == std::string_view::npos;
    return isId ? std::string(text) : std::string();
}

CloudRefusal refusal(const JsonObject& dictionary, int status, const SecretBytes& userToken) {
    const std::string_view serverCode = textOf(dictionary, "serverErrorCode");
    const std::string_view reason = textOf(dictionary, "reason");
    std::string description(serverCode);
    if (!reason.empty()) description.append(": ").append(reason);
    const UserTokenUse use = userToken.empty() ? UserTokenUse::none : UserTokenUse::sent;
    return {.error = {.code = errorCodeOfServer(serverCode, status, use),
                      .retryAfterSeconds = retryAfter(dictionary),
                      .description = presentable(description, userToken)},
            .serverErrorCode = std::string(serverCode),
            .redirectUrl = std::string(textOf(dictionary, "redirectURL")),
            .supportId = supportId(textOf(dictionary, "uuid"))};
}

// What ended the exchange before there was an answer.
std::optional<CloudRefusal> interruption(const HttpAnswer& answer) {
    switch (answer.end) {
        case HttpAnswer::End::answered:
            break;
        case HttpAnswer::End::silent:
        case HttpAnswer::End::late:
            return failed(cloud_error_code::networkFailure, "서버가 제때 답하지 않았어요.");
        case HttpAnswer::End::tooLarge:
            return failed(cloud_error_code::networkFailure, "서버의 답이 너무 커요.");
        case HttpAnswer::End::cancelled:
            return failed(cloud_error_code::operationCancelled, "보내기를 그만뒀어요.");
    }
    if (answer.status != 0) return std::nullopt;
    const int code = errorCodeOfNetwork(answer.error);
    return failed(code, code == cloud_error_code::networkUnavailable ? "인터넷에 연결되지 않았어요."
                                                                     : "서버에 연결하지 못했어요.");
}

const JsonObject* fieldOf(const JsonObject& entry, std::string_view name) {
    const JsonValue* fields = entry.find("fields");
    const JsonValue* field = fields != nullptr ? fields->member(name) : nullptr;
    return field != nullptr ? field->object() : nullptr;
}

std::optional<std::string> bytesOf(const JsonObject& field) {
    const JsonValue* type = field.find("type");
    if (type != nullptr && (type->string() == nullptr || *type->string() != "BYTES"))
        return std::nullopt;
    const JsonValue* value = field.find("value");
    if (value == nullptr || value->string() == nullptr) return std::nullopt;
    const auto decoded = QByteArray::fromBase64Encoding(
        QByteArray::fromStdString(*value->string()),
        QByteArray::Base64Encoding | QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded) return std::nullopt;
    return decoded.decoded.toStdString();
}

}  // namespace

CloudRefusal refusalOf(const JsonObject& entry, const CloudReply& reply) {
    return refusal(entry, reply.status, reply.userToken);
}

CloudAnswer readCloudAnswer(const HttpAnswer& answer, const SecretBytes& userToken) {
    if (auto interrupted = interruption(answer)) return tl::unexpected(*std::move(interrupted));
    const bool isRedirect = answer.status >= firstRedirect && answer.status < firstError;
    std::optional<JsonObject> body;
    if (!isRedirect) body = parseJsonObject(view(answer.body));
    if (!body) return tl::unexpected(refusalByStatus(answer));
    if (isError(*body)) {
        CloudRefusal refused = refusal(*body, answer.status, userToken);
        if (!refused.error.retryAfterSeconds)
            refused.error.retryAfterSeconds = retryAfter(answer.retryAfter);
        return tl::unexpected(std::move(refused));
    }
    const JsonValue* records = body->find("records");
    const bool hasRecords = records != nullptr && records->array() != nullptr;
    if (answer.status >= firstError && !hasRecords) return tl::unexpected(refusalByStatus(answer));
    return CloudReply{.body = *std::move(body), .status = answer.status, .userToken = userToken};
}

bool isError(const JsonObject& entry) {
    const JsonValue* code = entry.find("serverErrorCode");
    return code != nullptr && code->string() != nullptr;
}

bool isDeleted(const JsonObject& entry) {
    const JsonValue* deleted = entry.find("deleted");
    return deleted != nullptr && deleted->boolean() != nullptr && *deleted->boolean();
}

const JsonObject* recordEntry(const JsonObject& body, std::string_view recordName) {
    const JsonValue* records = body.find("records");
    if (records == nullptr || records->array() == nullptr) return nullptr;
    for (const JsonValue& entry : *records->array()) {
        if (entry.object() == nullptr) continue;
        const JsonValue* name = entry.object()->find("recordName");
        // An error may stand in the place of its record without naming it; we ask for one record.
        const bool isNamelessError = name == nullptr && isError(*entry.object());
        if (isNamelessError || textOf(*entry.object(), "recordName") == recordName)
            return entry.object();
    }
    return nullptr;
}

CloudRecord recordOf(const JsonObject& entry) {
    CloudRecord record{.recordType = std::string(textOf(entry, "recordType")),
                       .recordName = std::string(textOf(entry, "recordName"))};
    const std::string_view tag = textOf(entry, "recordChangeTag");
    if (!tag.empty()) record.recordChangeTag = tag;
    if (const JsonObject* payload = fieldOf(entry, payloadField))
        record.payload = bytesOf(*payload);
    return record;
}

bool hasPayload(const JsonObject& entry) {
    return fieldOf(entry, payloadField) != nullptr;
}

}  // namespace brimwatch
