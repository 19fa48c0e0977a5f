#include "VekRemoteAccess.h"

#include <algorithm>

#include "VekExitHttp.h"
#include "VekFrameReader.h"
#include "VekRawStringSink.h"
#include "VekTuningDocument.h"

namespace vekhttp {

using namespace vekmaster;

namespace {

using Json = VekDeviceAccess::Json;
using Outcome = VekMasterReply::Outcome;

std::string textAt(const Json& object, const char* name) {
    const Json* value = VekValueJson::member(&object, name);
    return value != nullptr && value->is_string() ? value->get<std::string>() : "";
}

}  // namespace

VekRemoteAccess::VekRemoteAccess(VekHttpClient& client, int device)
    : client_(client),
      base_("/api/devices/" + std::to_string(device)),
      catalog_(VekMessageCatalog::shared()),
      decoder_(reply_),
      table_(VekSettingsTable::shared()) {}

std::string VekRemoteAccess::errorOf(const std::string& body) {
    Json json;
    if (VekTuningDocument::parse(body, json).empty()) {
        const std::string text = textAt(json, "error");
        if (!text.empty()) {
            return text;
        }
    }
    return body.empty() ? "no reason given" : body;
}

void VekRemoteAccess::refused(int status, const std::string& problem, VekMasterReply& reply) const {
    switch (status == 0 ? VekExitStatus::kIo : VekExitHttp::exit(status)) {
        case VekExitStatus::kNoAnswer:
            reply.outcome = Outcome::NoAnswer;
            break;
        case VekExitStatus::kUsage:
            reply.outcome = Outcome::Refused;
            break;
        default:
            reply.outcome = Outcome::LineFailed;
            break;
    }
    reply.problem = problem;
}

bool VekRemoteAccess::feedFrame(VekFrameReader& reader, const Json& answer) {
    // The reply's header line, read as it came off the server's line.
    const std::string frame = textAt(answer, "frame") + '\n';
    reader.feed(frame.data(), frame.size());
    return reply_.received;
}

void VekRemoteAccess::exchange(VekMasterExchange::Batch& batch) {
    for (const VekMasterExchange& e : batch) {
        // A batch's answers carry no raw data: such messages go one at a time.
        if (e.message->rawAnswer) {
            VekDeviceAccess::exchange(batch);
            return;
        }
    }
    constexpr size_t kSlice = kMaxBatch;
    for (size_t first = 0; first < batch.size(); first += kSlice) {
        const size_t end = std::min(batch.size(), first + kSlice);
        Json messages = Json::array();
        for (size_t i = first; i < end; ++i) {
            messages.push_back({{"feature", batch[i].message->feature},
                                {"message", batch[i].message->name},
                                {"args", batch[i].args}});
        }
        VekHttpClient::Response response;
        const std::string problem = client_.exchange(
            "POST", base_ + "/batch", VekValueJson::dump(Json{{"messages", messages}}), response);
        Json answers;
        const bool ok = problem.empty() && response.status == 200 &&
                        VekTuningDocument::parse(response.body, answers).empty();
        for (size_t i = first; i < end; ++i) {
            VekMasterExchange& e = batch[i];
            const Json* answer = ok ? VekValueJson::member(&answers, "answers") : nullptr;
            answer = answer != nullptr && answer->is_array() && answer->size() > i - first
                         ? &(*answer)[i - first]
                         : nullptr;
            const Json* status = VekValueJson::member(answer, "status");
            const Json* body = VekValueJson::member(answer, "body");
            reply_.expect(e.message->feature, e.message->name + "Response");
            if (!problem.empty() || response.status != 200) {
                refused(problem.empty() ? response.status : 0,
                        problem.empty() ? errorOf(response.body) : problem, reply_);
            } else if (status == nullptr || !status->is_number_integer() || body == nullptr) {
                reply_.outcome = Outcome::LineFailed;
                reply_.problem = client_.url() + " answered a batch without " +
                                 e.message->feature + ' ' + e.message->name + "'s answer";
            } else if (status->get<int>() != 200) {
                refused(status->get<int>(), textAt(*body, "error"), reply_);
            } else {
                VekRawStringSink memory(reply_.rawData);
                VekFrameReader reader(decoder_, reply_);
                reader.await(memory);
                if (feedFrame(reader, *body)) {
                    reply_.outcome = reply_.fail ? Outcome::Ng : Outcome::Ok;
                } else {
                    reply_.outcome = Outcome::LineFailed;
                    reply_.problem = client_.url() + " answered " + e.message->feature + ' ' +
                                     e.message->name + " with no reply";
                }
            }
            e.reply = reply_;
            e.sent = e.reply.outcome != Outcome::Refused;
        }
    }
}

const VekMasterReply& VekRemoteAccess::request(const std::string& feature, const std::string& name,
                                               const vekprotocol::VekFields& args, VekRawSink* raw) {
    reply_.expect(feature, name + "Response");
    const VekMasterMessage* message = catalog_.find(feature, name);
    if (message == nullptr) {
        reply_.outcome = Outcome::Refused;
        reply_.problem = "no message " + feature + ' ' + name;
        return reply_;
    }
    const Json body = {{"feature", feature}, {"message", name}, {"args", args}};
    VekRawStringSink memory(reply_.rawData);
    VekRawSink& sink = raw != nullptr ? *raw : memory;
    VekFrameReader reader(decoder_, reply_);
    reader.await(sink);
    const auto decode = [&](const std::string& wire) {
        Json json;
        return VekTuningDocument::parse(wire, json).empty() && feedFrame(reader, json);
    };
    VekHttpClient::Response response;
    bool decoded = false;
    std::string problem;
    // An answer's bytes come only with the streamed route, into memory unless a sink is
    // given; other messages take the route the line may window with other clients'.
    const bool streamed = raw != nullptr || message->rawAnswer;
    if (!streamed) {
        problem = client_.exchange("POST", base_ + "/request", VekValueJson::dump(body), response);
        decoded = problem.empty() && response.status == 200 && decode(response.body);
    } else {
        problem = client_.exchange(
            "POST", base_ + "/request?raw=1", VekValueJson::dump(body), response,
            [&](const VekHttpClient::Response& head) {
                decoded = head.status == 200 && decode(head.reply);
                return decoded;
            },
            [&](const char* data, size_t size) {
                reader.feed(data, size);
                return true;
            });
    }
    if (!problem.empty() || response.status != 200) {
        if (reply_.received && !reader.complete()) {
            sink.abandon();
        }
        const bool ran = problem.empty();
        refused(ran ? response.status : 0, ran ? errorOf(response.body) : problem, reply_);
        reply_.received = false;
        return reply_;
    }
    if (!decoded) {
        reply_.outcome = Outcome::LineFailed;
        reply_.problem = client_.url() + " answered " + feature + ' ' + name + " with no reply";
        return reply_;
    }
    if (streamed && !reader.complete()) {
        sink.abandon();
        reply_.outcome = reader.sinkFailed() ? Outcome::RawFailed : Outcome::LineFailed;
        reply_.problem = reader.sinkFailed() ? sink.problem()
                                             : "the raw data of " + feature + ' ' + name +
                                                   " did not come whole from " + client_.url();
        return reply_;
    }
    reply_.outcome = reply_.fail ? Outcome::Ng : Outcome::Ok;
    return reply_;
}

bool VekRemoteAccess::read(const Json* only, VekDeviceReading& reading) {
    reading = VekDeviceReading();
    failure_ = VekMasterReply();
    VekHttpClient::Response response;
    const std::string problem =
        only == nullptr
            ? client_.exchange("GET", base_ + "/snapshot", "", response)
            : client_.exchange("POST", base_ + "/snapshot",
                               VekValueJson::dump(Json{{"format", VekTuningDocument::kFormat},
                                                       {"settings", *only}}),
                               response);
    Json document;
    if (!problem.empty() || response.status != 200 ||
        !VekTuningDocument::parse(response.body, document).empty()) {
        refused(problem.empty() ? response.status : 0,
                problem.empty() ? errorOf(response.body) : problem, failure_);
        return false;
    }
    const Json* device = VekValueJson::member(&document, "device");
    const Json* settings = VekValueJson::member(&document, "settings");
    const Json* features = VekValueJson::member(device, "features");
    reading.path = device != nullptr ? textAt(*device, "path") : "";
    reading.version = device != nullptr ? textAt(*device, "version") : "";
    if (features != nullptr && features->is_array()) {
        for (const Json& feature : *features) {
            reading.features.push_back(feature.is_string() ? feature.get<std::string>() : "");
        }
    }
    reading.settings = settings != nullptr ? *settings : Json::object();
    int values = 0;
    VekTuningDocument::count(table_, reading.settings, values, reading.missing);
    return true;
}

VekTuningApply::Result VekRemoteAccess::apply(const Json& document,
                                              const VekTuningApply::Options& options) {
    std::string target = base_ + "/apply";
    target += options.dryRun ? "?dry_run=1" : "";
    target += options.bypass ? (options.dryRun ? "&bypass=1" : "?bypass=1") : "";
    VekHttpClient::Response response;
    const std::string problem =
        client_.exchange("POST", target, VekValueJson::dump(document), response);
    VekTuningApply::Result result;
    Json json;
    if (problem.empty() && VekTuningDocument::parse(response.body, json).empty() &&
        VekTuningApply::fromJson(json, result)) {
        if (response.status != 200) {
            result.status = VekExitHttp::exit(response.status);
        }
        return result;
    }
    VekMasterReply failed;
    refused(problem.empty() ? response.status : 0,
            problem.empty() ? errorOf(response.body) : problem, failed);
    result.status = VekExitStatus::of(failed);
    result.problem = failed.problem;
    return result;
}

}  // namespace vekhttp
