#include "platform/linux/cloud_questions.h"

#include <QByteArray>
#include <utility>

#include "support/json_writer.h"

namespace brimwatch {
namespace {

CloudQuestion post(std::string operation, JsonObject body) {
    return {.operation = std::move(operation),
            .json = writeJson(JsonValue(std::move(body)), JsonLayout::compact)};
}

JsonObject named(const std::string& recordName) {
    JsonObject record;
    record.set("recordName", recordName);
    return record;
}

JsonArray listOf(JsonObject object) {
    JsonArray list;
    list.emplace_back(std::move(object));
    return list;
}

CloudQuestion operation(const char* type, JsonObject record) {
    JsonObject change;
    change.set("operationType", type);
    change.set("record", std::move(record));
    JsonObject body;
    body.set("operations", listOf(std::move(change)));
    return post("records/modify", std::move(body));
}

JsonObject payloadFields(const std::string& payload) {
    const QByteArray bytes =
        QByteArray::fromRawData(payload.data(), static_cast<qsizetype>(payload.size()));
    JsonObject field;
    // Without its type a first save would make a field of text of it.
    field.set("type", "BYTES");
    field.set("value", bytes.toBase64().toStdString());
    JsonObject fields;
    fields.set("payload", std::move(field));
    return fields;
}

const char* operationType(const CloudRecord& record, SavePolicy policy) {
    if (policy == SavePolicy::allKeys) return "forceUpdate";
    return record.recordChangeTag ? "update" : "create";
}

}  // namespace

CloudQuestion askCaller() {
    return {.operation = "users/caller", .json = {}};
}

CloudQuestion lookUp(const std::string& recordName) {
    JsonObject body;
    body.set("records", listOf(named(recordName)));
    return post("records/lookup", std::move(body));
}

CloudQuestion modify(const CloudRecord& record, SavePolicy policy) {
    JsonObject content = named(record.recordName);
    content.set("recordType", record.recordType);
    if (policy == SavePolicy::ifServerRecordUnchanged && record.recordChangeTag)
        content.set("recordChangeTag", *record.recordChangeTag);
    content.set("fields", record.payload ? payloadFields(*record.payload) : JsonObject());
    return operation(operationType(record, policy), std::move(content));
}

CloudQuestion remove(const std::string& recordName) {
    return operation("forceDelete", named(recordName));
}

}  // namespace brimwatch
