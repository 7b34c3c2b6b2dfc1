#include "presentation/phone_link_sheet.h"

#include <chrono>
#include <utility>

#include "platform/record_database.h"
#include "platform/spawn.h"
#include "presentation/translated.h"
#include "publish/limits_cloud.h"
#include "publish/phone_keychain.h"
#include "publish/phone_link_text.h"
#include "publish/publishers/cloud_failure.h"

namespace brimwatch {

namespace {

using Action = PhoneLinkSheet::Action;

constexpr std::chrono::seconds copiedFor(2);

QString keychainText(KeyStatus status, Action action) {
    switch (action) {
        case Action::make:
            return translated(
                       "연결 키를 만들지 못했어요 (오류 %1). 시스템 설정에서 암호 동기화가 켜져 "
                       "있는지 확인해 주세요.")
                .arg(status);
        case Action::rotate:
            return translated(
                       "새 연결 키를 저장하지 못했어요 (오류 %1). 시스템 설정에서 암호 동기화가 "
                       "켜져 있는지 확인해 주세요.")
                .arg(status);
        case Action::disconnect:
            break;
    }
    return translated("연결 키를 지우지 못했어요 (오류 %1).").arg(status);
}

QString noAccountText() {
    return translated("시스템 설정에서 Apple 계정에 로그인해 주세요.");
}

QString otherText(Action action) {
    return action == Action::disconnect
               ? translated("연결을 끊지 못했어요. 인터넷 연결을 확인하고 다시 눌러 주세요.")
               : translated("연결 키를 저장하지 못했어요. 다시 해 주세요.");
}

}  // namespace

PhoneLinkSheet::PhoneLinkSheet(PhoneLinkPublisher& publisher, Clipboard& clipboard, Sleep sleep)
    : publisher_(publisher), clipboard_(clipboard), sleep_(std::move(sleep)) {
    connect(&publisher, &PhoneLinkPublisher::keyChanged, this, &PhoneLinkSheet::linkTextChanged);
    connect(&publisher, &PhoneLinkPublisher::isChangingChanged, this,
            &PhoneLinkSheet::isChangingChanged);
}

QString PhoneLinkSheet::linkText() const {
    const auto& key = publisher_.key();
    return key ? QString::fromStdString(phoneLinkText(*key)) : QString();
}

void PhoneLinkSheet::appear() {
    setProblem({});
    setCopied(false);
    try {
        publisher_.showLink();
    } catch (...) {
        setProblem(problemText(std::current_exception(), Action::make));
    }
}

void PhoneLinkSheet::copy() {
    clipboard_.setSecretText(linkText());
    setCopied(true);
    spawn(forgetCopy(this, sleep_));
}

void PhoneLinkSheet::rotate() {
    setProblem({});
    spawn(rotateLink(this));
}

void PhoneLinkSheet::disconnectLink() {
    setProblem({});
    spawn(endLink(this));
}

QString PhoneLinkSheet::problemText(const std::exception_ptr& thrown, Action action) {
    try {
        std::rethrow_exception(thrown);
    } catch (const PhoneKeychain::Failure& failure) {
        return keychainText(failure.status(), action);
    } catch (const LimitsCloud::Failure& failure) {
        const bool isNoAccount = failure.reason() == LimitsCloud::Failure::Reason::noAccount;
        return isNoAccount ? noAccountText() : otherText(action);
    } catch (const CloudFailure& failure) {
        const bool isNoAccount = failure.error().code == cloud_error_code::notAuthenticated;
        return isNoAccount ? noAccountText() : otherText(action);
    } catch (...) {
        return otherText(action);
    }
}

QCoro::Task<> PhoneLinkSheet::rotateLink(Sheet sheet) {
    std::exception_ptr thrown;
    try {
        co_await sheet->publisher_.rotate();
    } catch (...) {
        thrown = std::current_exception();
    }
    if (sheet && thrown) sheet->setProblem(problemText(thrown, Action::rotate));
}

QCoro::Task<> PhoneLinkSheet::endLink(Sheet sheet) {
    std::exception_ptr thrown;
    try {
        co_await sheet->publisher_.disconnect();
    } catch (...) {
        thrown = std::current_exception();
    }
    if (!sheet) co_return;
    if (thrown) {
        sheet->setProblem(problemText(thrown, Action::disconnect));
    } else {
        emit sheet->dismissed();
    }
}

// Each press has a time of its own: the first one ends the label of all.
QCoro::Task<> PhoneLinkSheet::forgetCopy(Sheet sheet, Sleep sleep) {
    co_await sleep(copiedFor);
    if (sheet) sheet->setCopied(false);
}

void PhoneLinkSheet::setProblem(const QString& problem) {
    if (problem_ == problem) return;
    problem_ = problem;
    emit problemChanged();
}

void PhoneLinkSheet::setCopied(bool isCopied) {
    if (isCopied_ == isCopied) return;
    isCopied_ = isCopied;
    emit isCopiedChanged();
}

}  // namespace brimwatch
