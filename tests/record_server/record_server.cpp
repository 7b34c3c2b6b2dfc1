#include "record_server/record_server.h"

#include <QHostAddress>
#include <QTimer>
#include <algorithm>
#include <cctype>
#include <stdexcept>

namespace brimwatch::test {
namespace {

using Json = RecordServer::Json;
using Reply = RecordServer::Reply;
using Request = RecordServer::Request;

const std::string endOfHead = "\r\n\r\n";

std::string lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// As web servers decode queries: "+" is a blank.
std::string decoded(std::string text) {
    std::replace(text.begin(), text.end(), '+', ' ');
    return QByteArray::fromPercentEncoding(QByteArray::fromStdString(text)).toStdString();
}

std::map<std::string, std::string> parseQuery(const std::string& text) {
    std::map<std::string, std::string> query;
    std::size_t start = 0;
    while (start < text.size()) {
        const std::size_t end = std::min(text.find('&', start), text.size());
        const std::string item = text.substr(start, end - start);
        const std::size_t equals = std::min(item.find('='), item.size());
        query[item.substr(0, equals)] = decoded(item.substr(std::min(equals + 1, item.size())));
        start = end + 1;
    }
    return query;
}

Request parseHead(const std::string& head) {
    Request request;
    std::size_t end = head.find("\r\n");
    const std::string line = head.substr(0, end);
    request.method = line.substr(0, line.find(' '));
    request.target = line.substr(line.find(' ') + 1, line.rfind(' ') - line.find(' ') - 1);
    while (end < head.size()) {
        const std::size_t start = end + 2;
        end = std::min(head.find("\r\n", start), head.size());
        const std::string header = head.substr(start, end - start);
        const std::size_t colon = header.find(':');
        if (colon == std::string::npos) continue;
        request.headers[lower(header.substr(0, colon))] = header.substr(colon + 2);
    }
    const std::size_t mark = request.target.find('?');
    if (mark != std::string::npos) request.query = parseQuery(request.target.substr(mark + 1));
    return request;
}

std::string prefix() {
    return std::string("/database/1/") + RecordServer::container + '/' + RecordServer::environment +
           "/public/";
}

Json errorEntry(const std::string& recordName, const std::string& code) {
    return {{"recordName", recordName}, {"serverErrorCode", code}, {"reason", "test: " + code}};
}

int statusOf(const std::string& code) {
    static const std::map<std::string, int> statuses = {
        {"ACCESS_DENIED", 403}, {"BAD_REQUEST", 400}, {"CONFLICT", 409},
        {"EXISTS", 409},        {"NOT_FOUND", 404},
    };
    return statuses.at(code);
}

}  // namespace

std::string RecordServer::Request::userToken() const {
    const auto token = query.find("ckWebAuthToken");
    return token != query.end() ? token->second : std::string();
}

RecordServer::RecordServer() {
    if (!server_.listen(QHostAddress(QHostAddress::LocalHost)))
        throw std::runtime_error("no port for a record server");
    connect(&server_, &QTcpServer::newConnection, this, &RecordServer::accept);
}

RecordServer::~RecordServer() = default;

std::string RecordServer::address() const {
    return "http://127.0.0.1:" + std::to_string(server_.serverPort());
}

std::string RecordServer::signIn(const std::string& user) {
    return nextToken(user);
}

std::string RecordServer::nextToken(const std::string& user) {
    const std::string token = "tok+en/" + user + '-' + std::to_string(++count_) + "==";
    users_[token] = user;
    latestTokens_[user] = token;
    return token;
}

Reply RecordServer::error(int status, const std::string& code, const std::string& reason,
                          std::optional<double> retryAfter) {
    Json body = {{"uuid", "00000000-aaaa-bbbb-cccc-0123456789ab"}, {"serverErrorCode", code}};
    if (!reason.empty()) body["reason"] = reason;
    if (retryAfter) body["retryAfter"] = *retryAfter;
    if (code == "AUTHENTICATION_REQUIRED") body["redirectURL"] = signInPage;
    return {.status = status, .body = body.dump()};
}

Reply RecordServer::page(int status) {
    return {.status = status,
            .body = "<!DOCTYPE html><html><body>Welcome to the guest network</body></html>",
            .headers = {{"Content-Type", "text/html"}}};
}

std::optional<std::string> RecordServer::payload(const std::string& recordName) const {
    const auto record = records_.find(recordName);
    if (record == records_.end() || !record->second.fields.contains("payload")) return std::nullopt;
    const std::string value = record->second.fields["payload"]["value"];
    return QByteArray::fromBase64(QByteArray::fromStdString(value)).toStdString();
}

void RecordServer::put(const std::string& recordName, const std::string& type,
                       const std::string& payload, const std::string& user) {
    const std::string value = QByteArray::fromStdString(payload).toBase64().toStdString();
    records_[recordName] = {.type = type,
                            .fields = {{"payload", {{"type", "BYTES"}, {"value", value}}}},
                            .tag = "t" + std::to_string(++count_),
                            .creator = user};
}

void RecordServer::accept() {
    while (QTcpSocket* visitor = server_.nextPendingConnection()) {
        connect(visitor, &QTcpSocket::readyRead, this, [this, visitor] { read(*visitor); });
        connect(visitor, &QTcpSocket::disconnected, visitor, &QObject::deleteLater);
    }
}

void RecordServer::read(QTcpSocket& visitor) {
    const std::string received = visitor.peek(visitor.bytesAvailable()).toStdString();
    const std::size_t end = received.find(endOfHead);
    if (end == std::string::npos) return;
    Request request = parseHead(received.substr(0, end));
    const auto length = request.headers.find("content-length");
    const std::size_t bodySize = length != request.headers.end() ? std::stoul(length->second) : 0;
    const std::size_t whole = end + endOfHead.size() + bodySize;
    if (received.size() < whole) return;
    request.body = received.substr(end + endOfHead.size(), bodySize);
    visitor.read(static_cast<qint64>(whole));
    if (request.target.starts_with(prefix())) {
        request.operation = request.target.substr(prefix().size());
        request.operation.resize(std::min(request.operation.find('?'), request.operation.size()));
    }
    requests_.push_back(request);
    receive(visitor, request);
}

void RecordServer::receive(QTcpSocket& visitor, const Request& request) {
    mostAtOnce_ = std::max(mostAtOnce_, ++atOnce_);
    Reply reply;
    if (!replies_.empty()) {
        reply = replies_.front();
        replies_.pop_front();
    } else {
        if (beforeEach_) beforeEach_(request);
        reply = carryOut(request);
        if (afterNext_) std::exchange(afterNext_, nullptr)(reply);
    }
    const auto delay = latency_ + reply.delay;
    auto* const timer = new QTimer(&visitor);
    timer->setSingleShot(true);
    connect(timer, &QTimer::timeout, this, [this, timer, &visitor, reply] {
        timer->deleteLater();
        deliver(visitor, reply);
    });
    connect(timer, &QObject::destroyed, this, [this] { --atOnce_; });
    timer->start(delay);
}

void RecordServer::deliver(QTcpSocket& visitor, const Reply& reply) {
    if (reply.delivery == Delivery::never) return;
    if (reply.delivery == Delivery::broken) return visitor.abort();
    std::string head = "HTTP/1.1 " + std::to_string(reply.status) +
                       " Test\r\nContent-Length: " + std::to_string(reply.body.size()) + "\r\n";
    for (const auto& [name, value] : reply.headers)
        head.append(name).append(": ").append(value).append("\r\n");
    visitor.write(QByteArray::fromStdString(head + "\r\n"));
    if (reply.delivery == Delivery::head) return;
    const bool isHalf = reply.delivery == Delivery::half;
    visitor.write(QByteArray::fromStdString(isHalf ? reply.body.substr(0, reply.body.size() / 2)
                                                   : reply.body));
    if (isHalf) visitor.disconnectFromHost();
}

Reply RecordServer::carryOut(const Request& request) {
    if (request.operation.empty()) return error(400, "BAD_REQUEST", "unknown container");
    const auto api = request.query.find("ckAPIToken");
    if (api == request.query.end() || api->second != apiToken)
        return error(401, "AUTHENTICATION_FAILED", "api token");
    const std::string token = request.userToken();
    const auto known = users_.find(token);
    if (!token.empty() && known == users_.end()) {
        return unknownToken_ == UnknownToken::failed
                   ? error(401, "AUTHENTICATION_FAILED", "user token")
                   : error(421, "AUTHENTICATION_REQUIRED", "user token");
    }
    const std::string user = token.empty() ? std::string() : known->second;
    if (user.empty() && request.operation != "records/lookup")
        return error(421, "AUTHENTICATION_REQUIRED", "request needs authorization");

    Reply reply;
    if (request.operation == "users/caller") {
        reply = answerCaller(user);
    } else if (request.operation == "records/lookup") {
        reply = lookUp(request.json());
    } else if (request.operation == "records/modify") {
        reply = modify(request.json(), user);
    } else {
        reply = error(400, "BAD_REQUEST", "unknown operation");
    }
    if (user.empty() || rotation_ == Rotation::none) return reply;
    if (rotation_ == Rotation::oldOneDies) users_.erase(token);
    reply.headers.emplace_back("X-Apple-CloudKit-Web-Auth-Token", nextToken(user));
    return reply;
}

Reply RecordServer::answerCaller(const std::string& user) const {
    const Json identity = {{"userRecordName", "_" + user}, {"nameComponents", nullptr}};
    const Json body = callerForm_ == CallerForm::flat ? identity : Json{{"users", {identity}}};
    return {.body = body.dump()};
}

Json RecordServer::described(const std::string& recordName) const {
    const Record& record = records_.at(recordName);
    // Times of a server whose clock is ahead, which nobody must use.
    const Json stamp = {{"timestamp", 99'999'999'999'999},
                        {"userRecordName", "_" + record.creator}};
    return {{"recordName", recordName},
            {"recordType", record.type},
            {"fields", record.fields},
            {"recordChangeTag", record.tag},
            {"pluginFields", Json::object()},
            {"created", stamp},
            {"modified", stamp},
            {"deleted", false}};
}

Reply RecordServer::recordsReply(const Json& entries) const {
    const Json& first = entries.at(0);
    const bool isError = first.contains("serverErrorCode");
    if (isError && recordErrors_ == RecordErrors::atTopLevel)
        return error(statusOf(first["serverErrorCode"]), first["serverErrorCode"], "test");
    const bool hasStatus = isError && recordErrors_ == RecordErrors::inRecordsWithStatus;
    return {.status = hasStatus ? statusOf(first["serverErrorCode"]) : 200,
            .body = Json{{"records", entries}}.dump()};
}

Reply RecordServer::lookUp(const Json& body) {
    Json entries = Json::array();
    for (const Json& wanted : body.at("records")) {
        const std::string name = wanted.at("recordName");
        entries.push_back(records_.contains(name) ? described(name)
                                                  : errorEntry(name, "NOT_FOUND"));
    }
    return recordsReply(entries);
}

Reply RecordServer::modify(const Json& body, const std::string& user) {
    Json entries = Json::array();
    for (const Json& operation : body.at("operations"))
        entries.push_back(apply(operation, user));
    return recordsReply(entries);
}

Json RecordServer::apply(const Json& operation, const std::string& user) {
    const std::string type = operation.at("operationType");
    const Json& sent = operation.at("record");
    const bool deletes = type == "delete" || type == "forceDelete";
    return deletes ? remove(type, sent, user) : save(type, sent, user);
}

Json RecordServer::save(const std::string& type, const Json& sent, const std::string& user) {
    const std::string name = sent.at("recordName");
    const auto existing = records_.find(name);
    const bool exists = existing != records_.end();
    const bool makes = type == "create" || (type == "forceUpdate" && !exists);
    if (type == "create" && exists) return errorEntry(name, "EXISTS");
    if (makes && !sent.contains("recordType")) return errorEntry(name, "BAD_REQUEST");
    if (makes) {
        records_[name] = {.type = sent["recordType"], .fields = Json::object(), .creator = user};
    } else if (!exists) {
        return errorEntry(name, "NOT_FOUND");
    } else if (existing->second.creator != user) {
        return errorEntry(name, "ACCESS_DENIED");
    } else if (type == "update" && sent.value("recordChangeTag", "") != existing->second.tag) {
        return errorEntry(name, "CONFLICT");
    }
    Record& record = records_[name];
    record.fields.update(sent.value("fields", Json::object()));
    record.tag = "t" + std::to_string(++count_);
    return described(name);
}

Json RecordServer::remove(const std::string& type, const Json& sent, const std::string& user) {
    const std::string name = sent.at("recordName");
    const auto existing = records_.find(name);
    if (existing == records_.end()) {
        if (missingDelete_ == MissingDelete::isNotFound) return errorEntry(name, "NOT_FOUND");
    } else if (existing->second.creator != user) {
        return errorEntry(name, "ACCESS_DENIED");
    } else if (type == "delete" && sent.value("recordChangeTag", "") != existing->second.tag) {
        return errorEntry(name, "CONFLICT");
    }
    records_.erase(name);
    return {{"recordName", name}, {"deleted", true}};
}

}  // namespace brimwatch::test
