#include "ChannelTable.h"

namespace vekserver {

uint32_t ChannelTable::maskOf(const std::string& name) {
    for (const Entry& entry : kEntries) {
        if (name == entry.name) {
            return entry.mask;
        }
    }
    return kEntries[0].mask;
}

}  // namespace vekserver
