// What is thrown where a call to the record database ended with an error.
#pragma once

#include <exception>
#include <memory>

#include "platform/record_database.h"

namespace brimwatch {

class CloudFailure : public std::exception {
  public:
    explicit CloudFailure(CloudError error)
        : error_(std::make_shared<const CloudError>(std::move(error))) {}

    const CloudError& error() const noexcept { return *error_; }
    const char* what() const noexcept override { return error_->description.c_str(); }

  private:
    std::shared_ptr<const CloudError> error_;  // shared, so that a copy can't fail
};

}  // namespace brimwatch
