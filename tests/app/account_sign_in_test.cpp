#include "app/account_sign_in.h"

#include <gtest/gtest.h>

namespace brimwatch {
namespace {

using End = CloudSignInResult::End;

TEST(SignInFailure, IsTellingWhatTheUserCanDo) {
    const CloudError error{.description = "서버가 로그인 화면을 알려 주지 않았어요."};
    const std::pair<CloudSignInResult, std::string> rows[] = {
        {{.end = End::signedIn}, ""},
        {{.end = End::cancelled}, ""},
        {{.end = End::notStored, .status = key_status::interactionNotAllowed},
         "로그인했지만 저장하지 못했어요 (오류 -25308). 앱을 다시 켜면 다시 로그인해 주세요."},
        {{.end = End::notAnswered}, "로그인이 끝나지 않았어요. 다시 눌러 주세요."},
        {{.end = End::addressUnusable},
         "로그인을 마칠 주소를 열지 못했어요. 잠시 뒤 다시 눌러 주세요."},
        {{.end = End::serverRefused, .error = error},
         "로그인하지 못했어요: 서버가 로그인 화면을 알려 주지 않았어요."},
        {{.end = End::browserMissing}, "로그인 페이지를 열 브라우저를 찾지 못했어요."},
    };
    for (const auto& [result, text] : rows)
        EXPECT_EQ(signInFailureText(result), text);
}

}  // namespace
}  // namespace brimwatch
