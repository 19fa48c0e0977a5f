#include "VekReplyFormatter.h"

#include "VekReplyJson.h"

namespace vekmaster {

std::string VekReplyFormatter::text(const VekMasterReply& reply) {
    std::string out;
    for (const VekFieldPrinter::Field& field : reply.fields) {
        out += field.name + '=';
        for (size_t i = 0; i < field.parts.size(); ++i) {
            out += (i > 0 ? ":" : "") + field.parts[i].text;
        }
        out += '\n';
    }
    if (reply.rawDataLength > 0) {
        out += "rawDataLength=" + std::to_string(reply.rawDataLength) + '\n';
    }
    out += reply.fail ? "NG\n" : "OK\n";
    return out;
}

std::string VekReplyFormatter::json(const VekMasterReply& reply) {
    return VekValueJson::dump(VekReplyJson::of(reply)) + '\n';
}

}  // namespace vekmaster
