#include "VekChannelBands.h"

#include <algorithm>
#include <cstdlib>

#include "VekNames.h"
#include "VekSettingAccess.h"
#include "VekSettingsTable.h"

namespace vekmaster {

namespace {

using Json = VekValueJson::Json;

// The features that carry bands, the flexible one first.
const char* const kFeatures[] = {"EqV2", "Eq"};

}  // namespace

std::string VekChannelBands::checkChannel(const std::string& name) {
    return VekNames::contains(VekSettingsTable::channels(), name)
               ? ""
               : "no channel " + name + " (channels: " +
                     VekNames::join(VekSettingsTable::channels()) + ")";
}

bool VekChannelBands::read(VekDeviceAccess& access, const std::string& name,
                           const VekMasterReply*& failed, std::string& problem) {
    failed = nullptr;
    channel = name;
    bands.clear();
    problem = checkChannel(name);
    if (!problem.empty()) {
        return false;
    }
    const VekMasterReply* reply = &access.request("Common", "Feature", {}, nullptr);
    if (reply->outcome != VekMasterReply::Outcome::Ok) {
        failed = reply;
        return false;
    }
    std::vector<std::string> served;
    if (const VekFieldPrinter::Field* list = reply->field("features")) {
        for (const VekFieldPrinter::Part& part : list->parts) {
            served.push_back(part.text);
        }
    }
    feature.clear();
    for (const char* candidate : kFeatures) {
        if (feature.empty() && VekNames::contains(served, candidate)) {
            feature = candidate;
        }
    }
    if (feature.empty()) {
        problem = "the device serves no equaliser (it serves " + VekNames::join(served) + ")";
        return false;
    }
    const VekSettingsTable& table = VekSettingsTable::shared();
    VekSettingAccess::Result result;
    VekSettingAccess(access, table, nullptr).read({table.find(feature, "band"), {name, -1}}, result);
    if (result.reply.outcome != VekMasterReply::Outcome::Ok) {
        failure = result.reply;
        failed = &failure;
        return false;
    }
    add(result.value, result.value.size());
    return true;
}

void VekChannelBands::add(const Json& list, size_t limit) {
    for (size_t band = 0; band < limit; ++band) {
        const Json& item = list[band];
        if (!item.is_object()) {
            continue;  // a band the document leaves out, or one the device did not report
        }
        VekResponseCurve::Band values{};
        for (size_t i = 0; i < values.size(); ++i) {
            const Json* value = VekValueJson::member(&item, "value" + std::to_string(i + 1));
            values[i] = value != nullptr && value->is_number() ? value->get<double>() : 0;
        }
        bands.push_back(values);
    }
}

std::string VekChannelBands::take(const Json& document, const std::string& name) {
    channel = name;
    bands.clear();
    std::string problem = checkChannel(name);
    if (!problem.empty()) {
        return problem;
    }
    const Json* settings = VekValueJson::member(&document, "settings");
    for (const char* candidate : kFeatures) {
        const Json* eq = VekValueJson::member(settings, candidate);
        const Json* list = VekValueJson::member(VekValueJson::member(eq, "band"), name);
        if (list == nullptr || !list->is_array()) {
            continue;
        }
        feature = candidate;
        const Json* count = VekValueJson::member(VekValueJson::member(eq, "bandCount"), name);
        const size_t limit = count != nullptr && count->is_number_integer() && count->get<long>() >= 0
                                 ? std::min<size_t>(count->get<size_t>(), list->size())
                                 : list->size();
        add(*list, limit);
        return "";
    }
    return "the document holds no bands of " + name + " (settings.EqV2.band." + name +
           " or settings.Eq.band." + name + ")";
}

Json VekChannelBands::curve(const VekDeviceProfile& profile, size_t points, int device) const {
    Json body = Json::object();
    if (device >= 0) {
        body["device"] = device;
    }
    body["feature"] = feature;
    body["channel"] = channel;
    body.update(VekResponseCurve(profile, points).json(bands));
    return body;
}

}  // namespace vekmaster
