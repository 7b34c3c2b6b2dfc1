// Signing in to the cloud: the provider's page is opened in the user's browser, which then brings
// the token to an address on this machine (`SignInPage`).
//
// It gives up after five minutes. Who asks again meanwhile starts anew, with a new page in the
// browser: the former one may have been closed. The sign-in that is under way ends then, as it does
// when the user signs out, the sign-in goes, or the application quits. Main thread.
#pragma once

#include <QCoroTask>
#include <QUrl>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/cloud_connection.h"
#include "platform/linux/cloud_container.h"
#include "platform/linux/cloud_user_token.h"

namespace brimwatch {

struct CloudSignInResult {
    enum class End {
        signedIn,
        notStored,        // signed in until the program ends; `status` says why
        notAnswered,      // nobody came back in time
        cancelled,        // by a sign-out, a second sign-in, or the end of everything
        addressUnusable,  // this build's return address is none, or its port is taken
        serverRefused,    // `error` says why
        browserMissing,
    };

    End end = End::cancelled;
    KeyStatus status = key_status::success;
    std::optional<CloudError> error = {};
};

class CloudSignIn {
  public:
    struct Surroundings {
        CloudContainer container;
        std::string returnAddress;  // as stored with the API token
        std::function<bool(const QUrl& page)> openUrl;
        CloudTiming timing = {};
        std::chrono::milliseconds giveUpAfter{std::chrono::minutes(5)};
    };

    // The token must outlive it.
    CloudSignIn(Surroundings surroundings, CloudUserToken& userToken);
    CloudSignIn(const CloudSignIn&) = delete;
    CloudSignIn& operator=(const CloudSignIn&) = delete;
    ~CloudSignIn();

    // To be called when the user has just asked for it: at its end the key store may ask to be
    // unlocked.
    QCoro::Task<CloudSignInResult> signIn();
    // Forgets the token. `success` also if there was none.
    KeyStatus signOut();
    bool isUnderWay() const;

    // One way to the browser and back.
    class Attempt;

  private:
    void endAttempt();

    Surroundings surroundings_;
    CloudUserToken& userToken_;
    std::shared_ptr<Attempt> attempt_;
};

}  // namespace brimwatch
