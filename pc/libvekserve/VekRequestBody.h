#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "VekDeviceProfile.h"
#include "VekMessageCatalog.h"
#include "VekRemoteAccess.h"
#include "VekResponseCurve.h"
#include "VekSettingsTable.h"
#include "VekValueJson.h"

namespace vekserve {

// Reads the JSON bodies of the API's requests and checks them before anything is sent:
// a message against the message catalogue, documents against the settings table. Each
// gives "" or one line saying what is wrong, naming what was expected.
class VekRequestBody {
public:
    using Json = vekmaster::VekValueJson::Json;

    // Arrays and objects within each other, at most: a tuning document needs six. The
    // JSON library writes and copies a value by recursion, one call per level, so a body
    // nested tens of thousands deep would end the server on a stack overflow.
    static constexpr size_t kMaxDepth = 64;
    // The body nests no deeper than kMaxDepth, counted on the text before it is parsed
    // (a bracket in a string does not count).
    static bool shallow(const std::string& text);

    // What a diff compares: each side a document, or the device of that index.
    struct Diff {
        Json documents[2];
        bool device[2] = {false, false};
        int index = 0;
    };

    // {"feature": "Gain", "message": "SetMaster", "args": [-10]}: the message and its
    // ARGs as wire text, checked against limits unless it is null. An argument is a JSON
    // value of its field's type, or a string taken as the field's text; an array
    // argument stands for its elements.
    static vekmaster::VekError message(const vekmaster::VekMessageCatalog& catalog,
                                       const vekmaster::VekDeviceProfile* limits,
                                       const std::string& body,
                                       vekmaster::VekCheckedRequest& checked);
    // The same, already parsed: one element of a batch.
    static vekmaster::VekError message(const vekmaster::VekMessageCatalog& catalog,
                                       const vekmaster::VekDeviceProfile* limits, const Json& json,
                                       vekmaster::VekCheckedRequest& checked);
    // Messages that one window may carry; a batch is answered when its last answer is in.
    static constexpr size_t kMaxMessages = vekhttp::VekRemoteAccess::kMaxBatch;
    // {"messages": [MESSAGE, ...]}: the elements, each to be checked by message().
    static std::string messages(const std::string& body, std::vector<Json>& list);
    // Any JSON object (an empty body is {}).
    static std::string object(const std::string& body, Json& json);
    // {"settings": ["Gain/master", "EqV2/band/CF", ...]}: settings to read together, each
    // as its address below /settings/ names it, split into its segments.
    static std::string settingList(const std::string& body,
                                   std::vector<std::vector<std::string>>& addresses);
    // {"value": VALUE}: what a setting's value, or part of it, is to become.
    static std::string settingValue(const std::string& body, Json& value);
    // A tuning document (format vek-tuning/1).
    static std::string document(const vekmaster::VekSettingsTable& table, const std::string& body,
                                Json& document);
    // {"a": DOCUMENT or "device", "b": DOCUMENT or "device", "device": N}
    static std::string diff(const vekmaster::VekSettingsTable& table, const std::string& body,
                            Diff& diff);
    // {"bands": [[six numbers], ...], "points": N}: band values not on a device.
    static std::string curve(const std::string& body, std::vector<vekmaster::VekResponseCurve::Band>& bands,
                             size_t& points);
    // A curve's number of points from ?points=N; the default when text is empty.
    static std::string points(const std::string& text, size_t& points);
    // A device index from a path segment: a decimal number below count, or -1.
    static int index(const std::string& text, size_t count);
};

}  // namespace vekserve
