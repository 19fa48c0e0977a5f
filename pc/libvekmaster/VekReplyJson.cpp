#include "VekReplyJson.h"

namespace vekmaster {

VekValueJson::Json VekReplyJson::of(const VekMasterReply& reply) {
    using Json = VekValueJson::Json;
    Json fields = Json::object();
    for (const VekFieldPrinter::Field& field : reply.fields) {
        Json value = Json::array();
        for (const VekFieldPrinter::Part& part : field.parts) {
            value.push_back(VekValueJson::fromPart(part));
        }
        fields[field.name] = field.many || value.empty() ? value : value[0];
    }
    Json out = Json::object();
    out["feature"] = reply.feature;
    out["message"] = reply.message;
    out["self"] = reply.self;
    out["status"] = reply.fail ? "NG" : "OK";
    out["fields"] = std::move(fields);
    out["rawDataLength"] = reply.rawDataLength;
    return out;
}

}  // namespace vekmaster
