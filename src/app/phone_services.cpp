#include "app/phone_services.h"

#include <utility>

namespace brimwatch {
namespace {

CloudContainer containerOf(const BundleInfo& bundleInfo) {
    static_cast<void>(bundleInfo.requiredKeychainAccessGroup());
    CloudContainer container = {.identifier = bundleInfo.requiredCloudContainer(),
                                .environment = bundleInfo.cloudEnvironment,
                                .apiToken = bundleInfo.cloudApiToken};
    if (!bundleInfo.cloudService.empty()) container.address = bundleInfo.cloudService;
    return container;
}

}  // namespace

PhoneServices::PhoneServices(KeyStore& keys, const BundleInfo& bundleInfo,
                             std::function<bool(const QUrl& page)> openUrl)
    : right_(bundleInfo.canPublish() ? PublishingRight::granted : PublishingRight::missing),
      container_(containerOf(bundleInfo)),
      userToken_(keys, container_),
      records_(container_, userToken_),
      signIn_({.container = container_,
               .returnAddress = bundleInfo.cloudSignInRedirect,
               .openUrl = std::move(openUrl)},
              userToken_) {}

}  // namespace brimwatch
