#include "app/account_sign_in.h"

#include <string>
#include <variant>

#include "platform/spawn.h"

namespace brimwatch {

void AccountSignIn::start() {
    model_.clearFailure();
    spawn(run(this));
}

QCoro::Task<> AccountSignIn::run(QPointer<AccountSignIn> self) {
    const CloudSignInResult result = co_await self->signIn_.signIn();
    if (!self) co_return;
    const std::string failure = signInFailureText(result);
    if (!failure.empty()) self->model_.reportFailure(failure);
    using End = CloudSignInResult::End;
    if (result.end == End::signedIn || result.end == End::notStored) self->sendAgain();
}

// Both would wait for minutes by themselves.
void AccountSignIn::sendAgain() {
    if (model_.isRemoving()) return;
    if (std::holds_alternative<publication::NoAccount>(model_.cloud().state()))
        model_.cloud().switchOn();
    if (std::holds_alternative<publication::NoAccount>(model_.phone().state()))
        model_.phone().sendAnew();
    model_.refresh();
}

std::string signInFailureText(const CloudSignInResult& result) {
    using End = CloudSignInResult::End;
    switch (result.end) {
        case End::signedIn:
        case End::cancelled:
            return {};
        case End::notStored:
            return "로그인했지만 저장하지 못했어요 (오류 " + std::to_string(result.status) +
                   "). 앱을 다시 켜면 다시 로그인해 주세요.";
        case End::notAnswered:
            return "로그인이 끝나지 않았어요. 다시 눌러 주세요.";
        case End::addressUnusable:
            return "로그인을 마칠 주소를 열지 못했어요. 잠시 뒤 다시 눌러 주세요.";
        case End::serverRefused:
            return "로그인하지 못했어요: " +
                   (result.error ? result.error->description : std::string());
        case End::browserMissing:
            return "로그인 페이지를 열 브라우저를 찾지 못했어요.";
    }
    return {};
}

}  // namespace brimwatch
