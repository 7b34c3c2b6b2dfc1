// Saving the share of one computer into a record, on top of what others have saved there.
#pragma once

#include <QCoroTask>
#include <functional>
#include <optional>
#include <vector>

#include "limits/subscription_limits.h"
#include "platform/record_database.h"
#include "publish/mac_id.h"
#include "publish/publishers/limits_cloud_operations.h"
#include "publish/symmetric_key.h"
#include "support/instant.h"

namespace brimwatch {

struct ShareToSave {
    std::vector<SubscriptionLimits> limits;
    SymmetricKey key;
    std::optional<CloudRecord> record;  // as the server last had it; one of another key is not used
    Instant now;
    // Asked before and after each call to the database.
    std::function<bool()> isCurrent;
};

// Gives the record as the server has it now.
//
// After a conflict it puts the share on top of what the server has, at most four times in all; only
// a record that the server never had is ever forced. Throws `LimitsCloud::PublicationStopped` as
// soon as it is not current any more, else `CloudFailure`, or as `LimitsCloud::seal` does. The
// database must outlive it. Main thread.
QCoro::Task<CloudRecord> saveShare(RecordDatabase& database, RecordChannel channel, MacId macId,
                                   ShareToSave share);

}  // namespace brimwatch
