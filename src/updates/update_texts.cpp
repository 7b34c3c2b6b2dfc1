#include "updates/update_texts.h"

namespace brimwatch {
namespace {

using Phase = UpdateStatus::Phase;

std::string_view failureText(UpdateFailure failure) {
    switch (failure) {
        case UpdateFailure::network:
            return "업데이트 서버에 연결하지 못했어요.";
        case UpdateFailure::feed:
            return "업데이트 목록을 읽지 못했어요.";
        case UpdateFailure::refused:
            return "허용되지 않은 업데이트라 받지 않았어요.";
        case UpdateFailure::download:
            return "업데이트를 끝까지 받지 못했어요.";
        case UpdateFailure::signature:
            return "서명이 맞지 않아 설치하지 않았어요.";
        case UpdateFailure::archive:
            return "받은 파일이 올바른 업데이트가 아니라 설치하지 않았어요.";
        case UpdateFailure::disk:
            return "디스크에 쓰지 못해 설치하지 않았어요.";
        case UpdateFailure::relaunch:
            break;
    }
    return "설치는 했어요. 앱을 다시 켜면 새 버전이 열려요.";
}

std::string textOfFailure(const UpdateStatus& status) {
    if (!status.refusal.empty()) return status.refusal;
    return std::string(failureText(status.failure.value_or(UpdateFailure::network)));
}

std::string percentage(double fraction) {
    constexpr double whole = 100;
    constexpr double half = 0.5;
    return std::to_string(static_cast<int>(fraction * whole + half)) + '%';
}

}  // namespace

std::string updateStatusText(const UpdateStatus& status) {
    const std::string version = "새 버전 " + status.displayVersion;
    switch (status.phase) {
        case Phase::idle:
            break;
        case Phase::checking:
            return "업데이트를 확인하고 있어요.";
        case Phase::upToDate:
            return "최신 버전이에요.";
        case Phase::found:
            return version + (status.isInformational ? " 소식이 있어요." : " 설치할 수 있어요.");
        case Phase::downloading:
            return version + " 받는 중 " + percentage(status.downloadedFraction);
        case Phase::preparing:
            return version + " 확인하는 중";
        case Phase::ready:
            return version + " 준비됐어요. 앱을 끄거나 다시 켜면 바뀌어요.";
        case Phase::installing:
            return version + " 설치하고 다시 켜는 중";
        case Phase::failed:
            return textOfFailure(status);
    }
    return {};
}

std::string_view updateUnavailabilityText(UpdateUnavailability reason) {
    switch (reason) {
        case UpdateUnavailability::managedElsewhere:
            return "이 설치는 시스템의 패키지 관리자가 업데이트해요.";
        case UpdateUnavailability::noFeed:
        case UpdateUnavailability::noSigningKey:
            break;
    }
    return "이 빌드에는 업데이트 설정이 없어 업데이트하지 않아요.";
}

}  // namespace brimwatch
