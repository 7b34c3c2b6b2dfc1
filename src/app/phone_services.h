// What the system gives to the publishers: the records of this build's container, where it has the
// right to write there, and the sign-in to them. The network is not touched before something is
// sent.
//
// A build without the identifiers that none can do without ends the process here. Main thread,
// while there is an application.
#pragma once

#include <QUrl>
#include <functional>

#include "platform/bundle_info.h"
#include "platform/key_store.h"
#include "platform/linux/cloud_container.h"
#include "platform/linux/cloud_sign_in.h"
#include "platform/linux/cloud_user_token.h"
#include "platform/linux/cloudkit_record_database.h"
#include "publish/publishers/publication.h"

namespace brimwatch {

class PhoneServices {
  public:
    // The key store, which keeps the token of the user, must outlive this.
    // `openUrl` shows a page to the user and tells whether it could.
    PhoneServices(KeyStore& keys, const BundleInfo& bundleInfo,
                  std::function<bool(const QUrl& page)> openUrl);
    PhoneServices(const PhoneServices&) = delete;
    PhoneServices& operator=(const PhoneServices&) = delete;
    ~PhoneServices() = default;

    RecordDatabase& records() { return records_; }
    PublishingRight right() const { return right_; }
    const CloudContainer& container() const { return container_; }
    CloudSignIn& signIn() { return signIn_; }

  private:
    PublishingRight right_;
    CloudContainer container_;
    CloudUserToken userToken_;
    CloudKitRecordDatabase records_;
    CloudSignIn signIn_;
};

}  // namespace brimwatch
