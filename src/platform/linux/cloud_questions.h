// The questions that a record database puts to the cloud's web interface. Pure functions.
#pragma once

#include <string>

#include "platform/linux/cloud_connection.h"
#include "platform/record_database.h"

namespace brimwatch {

CloudQuestion askCaller();
CloudQuestion lookUp(const std::string& recordName);
CloudQuestion modify(const CloudRecord& record, SavePolicy policy);
CloudQuestion remove(const std::string& recordName);

}  // namespace brimwatch
