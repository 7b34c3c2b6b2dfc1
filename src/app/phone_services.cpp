#include "app/phone_services.h"

namespace brimwatch {
namespace {

CloudContainer containerOf(const BundleInfo& bundleInfo) {
    static_cast<void>(bundleInfo.requiredKeychainAccessGroup());
    return {.identifier = bundleInfo.requiredCloudContainer(),
            .environment = bundleInfo.cloudEnvironment,
            .apiToken = bundleInfo.cloudApiToken};
}

}  // namespace

PhoneServices::PhoneServices(KeyStore& keys, const BundleInfo& bundleInfo)
    : right_(bundleInfo.canPublish() ? PublishingRight::granted : PublishingRight::missing),
      container_(containerOf(bundleInfo)),
      userToken_(keys, container_),
      records_(container_, userToken_) {}

}  // namespace brimwatch
