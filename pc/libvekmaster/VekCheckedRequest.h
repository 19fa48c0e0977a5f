#pragma once

#include <utility>

#include "VekMasterMessage.h"
#include "VekSerDes.h"

namespace vekmaster {

// A message with ARGs the catalogue has passed (against the limits it was given): only
// the catalogue makes one, so whoever holds one sends it without checking it again.
class VekCheckedRequest {
public:
    VekCheckedRequest() = default;

    bool valid() const { return message_ != nullptr; }
    const VekMasterMessage& message() const { return *message_; }
    const vekprotocol::VekFields& args() const { return args_; }

private:
    friend class VekMessageCatalog;
    VekCheckedRequest(const VekMasterMessage& message, vekprotocol::VekFields args)
        : message_(&message), args_(std::move(args)) {}

    const VekMasterMessage* message_ = nullptr;
    vekprotocol::VekFields args_;
};

}  // namespace vekmaster
