// A model with everything that a removal takes back: status lines in three folders, shares in the
// records of both kinds of phones, a login item; and a question to Codex that is still open.
//
// Each channel has a server of its own, so that a test can fail one and not the other.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "accounts_fixture.h"
#include "log_capture.h"
#include "publish/memory_key_store.h"
#include "publish/publishers/scripted_record_database.h"
#include "publish/symmetric_key.h"

namespace brimwatch::test {

class RemovalWorld : public AccountsFixture {
  public:
    using Database = ScriptedRecordDatabase;

    RemovalWorld();
    ~RemovalWorld() override { model_.reset(); }
    void TestBody() override {}

    // With both shares sent. Codex was asked, and has not answered.
    void startSent();
    // As at a new start of the program.
    void restart();
    // From now on the servers answer when they are told to.
    void holdCalls();
    // Sends that have begun, of figures that are new.
    void beginSends();

    // Lets one thing go on, in the order of the policy; false when nothing waits.
    enum class Order { cloudFirst, phoneFirst, inTurn };
    bool goOn(Order order);
    void drain(Order order);

    bool hasShare(const Database& database, const std::string& record, const SymmetricKey& key);
    bool hasCloudShare();
    bool hasPhoneShare();
    // That nothing is collected, shown or wanted, besides those accounts of Claude Code.
    void expectAllDown(const HelperModel::AccountKeys& claude = {});
    // Runs a removal to its end.
    void removeAll();

    static const std::vector<std::string>& connectedNames();  // of folders: ".claude-a" and so on

    const LogCapture quiet_;
    const SymmetricKey cloudKey_;
    const SymmetricKey phoneKey_;
    MemoryKeyStore keys_;
    Database cloudRecords_;
    Database phoneRecords_;
    int turn_ = 0;

    // What a scenario of a test asks of its fixture.
    using AccountsFixture::advance;
    using AccountsFixture::answer;
    using AccountsFixture::defaults_;
    using AccountsFixture::model;
    using AccountsFixture::path;
    using AccountsFixture::services_;
    using AccountsFixture::time_;
};

}  // namespace brimwatch::test
