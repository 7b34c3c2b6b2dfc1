// What the button does that signs the user in to the records for phones: the browser is opened, and
// once the user has come back, what could not be sent is sent. What went wrong becomes a failure of
// the model. Main thread.
#pragma once

#include <QCoroTask>
#include <QObject>
#include <QPointer>

#include "core/helper_model.h"
#include "platform/linux/cloud_sign_in.h"

namespace brimwatch {

class AccountSignIn final : public QObject {
  public:
    // Both must outlive it.
    AccountSignIn(CloudSignIn& signIn, HelperModel& model) : signIn_(signIn), model_(model) {}

    // Once more while one is under way: opens the page again.
    void start();

  private:
    static QCoro::Task<> run(QPointer<AccountSignIn> self);
    void sendAgain();

    CloudSignIn& signIn_;
    HelperModel& model_;
};

// What the user reads of a sign-in that failed; empty if there is nothing to say.
std::string signInFailureText(const CloudSignInResult& result);

}  // namespace brimwatch
