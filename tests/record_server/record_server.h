// A cloud of records for tests: it speaks the provider's interface for the web on a loopback port,
// with users and their tokens, change tags and owners, and does everything wrong that it is told
// to.
//
// It runs in the event loop of the test, so whoever waits for an answer must let that run. Faults
// come in two ways: `answerNext` puts replies in front of those that the server would give, and
// `afterNext` lets it carry out a request but spoils the answer. What the provider leaves open can
// be set to each of its readings. Main thread, while there is an application.
#pragma once

#include <QByteArray>
#include <QObject>
#include <QTcpServer>
#include <QTcpSocket>
#include <chrono>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace brimwatch::test {

class RecordServer final : public QObject {
  public:
    using Json = nlohmann::json;

    struct Request {
        std::string method;
        std::string target;                          // path and query as they came
        std::string operation;                       // as in "records/lookup"
        std::map<std::string, std::string> query;    // decoded
        std::map<std::string, std::string> headers;  // names in lower case
        std::string body;

        Json json() const { return Json::parse(body); }
        std::string userToken() const;  // empty if it has none
    };

    // How a reply reaches who asked.
    enum class Delivery {
        whole,
        half,    // the head and half of the body, then the connection breaks
        head,    // the head alone, then nothing more
        never,   // not a byte, and the connection stays
        broken,  // not a byte, and the connection breaks
    };
    struct Reply {
        int status = 200;
        std::string body = {};
        std::vector<std::pair<std::string, std::string>> headers = {};
        Delivery delivery = Delivery::whole;
        std::chrono::milliseconds delay{0};
    };

    struct Record {
        std::string type;
        Json fields;
        std::string tag = {};
        std::string creator = {};
    };

    // What happens to the token of a request.
    enum class Rotation { none, oldOneStays, oldOneDies };
    // Where the error of a record stands, and with which status.
    enum class RecordErrors { inRecords, inRecordsWithStatus, atTopLevel };
    enum class MissingDelete { succeeds, isNotFound };
    enum class CallerForm { list, flat };
    enum class UnknownToken { failed, required };  // as AUTHENTICATION_FAILED, or as for no token

    static constexpr const char* container = "iCloud.net.example.test";
    static constexpr const char* environment = "development";
    static constexpr const char* apiToken = "api+token/1=";
    static constexpr const char* signInPage = "https://sign-in.example/start?a=b";

    RecordServer();
    ~RecordServer() override;

    std::string address() const;  // "http://127.0.0.1:PORT"

    // A token of that user, made if he is new: it holds characters that have to be encoded.
    std::string signIn(const std::string& user);
    // His latest token.
    std::string tokenOf(const std::string& user) const { return latestTokens_.at(user); }
    void expireTokens() { users_.clear(); }

    void set(Rotation rotation) { rotation_ = rotation; }
    void set(RecordErrors errors) { recordErrors_ = errors; }
    void set(MissingDelete reading) { missingDelete_ = reading; }
    void set(CallerForm form) { callerForm_ = form; }
    void set(UnknownToken reading) { unknownToken_ = reading; }
    void setLatency(std::chrono::milliseconds latency) { latency_ = latency; }

    // Replies to the next requests, in their order, which are not carried out.
    void answerNext(Reply reply) { replies_.push_back(std::move(reply)); }
    // Changes the reply to the next request, which is carried out.
    void afterNext(std::function<void(Reply&)> change) { afterNext_ = std::move(change); }
    // Runs before each request is carried out: for what others do meanwhile.
    void beforeEach(std::function<void(const Request&)> action) { beforeEach_ = std::move(action); }

    static Reply error(int status, const std::string& code, const std::string& reason = {},
                       std::optional<double> retryAfter = {});
    static Reply page(int status);  // as a network that wants a sign-in of its own shows

    std::map<std::string, Record>& records() { return records_; }
    // The bytes of a record's payload, or nothing.
    std::optional<std::string> payload(const std::string& recordName) const;
    // As if that user had saved it from elsewhere.
    void put(const std::string& recordName, const std::string& type, const std::string& payload,
             const std::string& user);

    const std::vector<Request>& requests() const { return requests_; }
    int mostAtOnce() const { return mostAtOnce_; }  // requests without an answer yet

  private:
    void accept();
    void read(QTcpSocket& visitor);
    void receive(QTcpSocket& visitor, const Request& request);
    void deliver(QTcpSocket& visitor, const Reply& reply);

    Reply carryOut(const Request& request);
    Reply answerCaller(const std::string& user) const;
    Reply lookUp(const Json& body);
    Reply modify(const Json& body, const std::string& user);
    Json apply(const Json& operation, const std::string& user);
    Json save(const std::string& type, const Json& sent, const std::string& user);
    Json remove(const std::string& type, const Json& sent, const std::string& user);
    Json described(const std::string& recordName) const;
    Reply recordsReply(const Json& entries) const;
    std::string nextToken(const std::string& user);

    QTcpServer server_;
    std::map<std::string, std::string> users_;  // by token
    std::map<std::string, std::string> latestTokens_;
    std::map<std::string, Record> records_;
    int count_ = 0;

    Rotation rotation_ = Rotation::oldOneDies;
    RecordErrors recordErrors_ = RecordErrors::inRecords;
    MissingDelete missingDelete_ = MissingDelete::succeeds;
    CallerForm callerForm_ = CallerForm::list;
    UnknownToken unknownToken_ = UnknownToken::failed;
    std::chrono::milliseconds latency_{0};

    std::deque<Reply> replies_;
    std::function<void(Reply&)> afterNext_;
    std::function<void(const Request&)> beforeEach_;
    std::vector<Request> requests_;
    int atOnce_ = 0;
    int mostAtOnce_ = 0;
};

}  // namespace brimwatch::test
