#include "VekPyArgs.h"

#include <algorithm>

namespace vekpython {

std::string VekPyArgs::read(const vekmaster::VekMasterMessage& message, const Json& values,
                            vekprotocol::VekFields& args) {
    args.clear();
    const std::string head = message.feature + ' ' + message.name + ": ";
    const std::string expects = " (expects " + message.signature.synopsis() + ')';
    size_t next = 0;
    for (const vekmaster::VekFieldSignature::Slot& slot : message.signature.slots()) {
        Json elements = Json::array();
        if (next < values.size() && values[next].is_array() && slot.count != 1) {
            elements = values[next++];
            if (slot.count > 1 && elements.size() != slot.count) {
                return head + slot.name + " takes " + std::to_string(slot.count) + " values, got " +
                       std::to_string(elements.size()) + expects;
            }
        } else {
            const size_t end =
                slot.count == 0 ? values.size() : std::min(values.size(), next + slot.count);
            for (; next < end; ++next) {
                elements.push_back(values[next]);
            }
        }
        for (size_t i = 0; i < elements.size(); ++i) {
            std::string text;
            const std::string problem =
                vekmaster::VekValueJson::toWire(slot.base, elements[i], text);
            if (!problem.empty()) {
                const std::string where =
                    slot.count == 1 ? slot.name : slot.name + '[' + std::to_string(i) + ']';
                return head + where + ' ' + problem + expects;
            }
            args.push_back(std::move(text));
        }
    }
    // Values beyond the fields make the count wrong, which the catalogue reports.
    args.resize(args.size() + (values.size() - next), "0");
    return "";
}

}  // namespace vekpython
