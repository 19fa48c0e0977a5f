#pragma once

#include <string>

namespace vekmaster {

class VekMessageCatalog;

// vek_master's bash completion: the commands and options of its help tables, the
// features, messages and channel names of its catalogue, as data for one fixed function.
class VekMasterCompletion {
public:
    static std::string script(const VekMessageCatalog& catalog);
};

}  // namespace vekmaster
