// The server's request router on arbitrary requests: the route table's match, the query,
// the Host check, and the JSON body readers that stand between a client and a line.
// Input: "METHOD TARGET" on the first line, the body after it.
//
// Checked: a message body that is accepted names a message of the catalogue with
// arguments the catalogue (and so the device profile) takes and the encoder writes, none
// holding a separator; an accepted document passes the document check again; accepted
// curve bands make a curve of the points asked for; a device index is below the count.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>

#include "VekAccessGuard.h"
#include "VekApiRoutes.h"
#include "VekHistoryRoutes.h"
#include "VekRequestBody.h"
#include "VekTuningDocument.h"

using namespace vekserve;
using namespace vekmaster;

namespace {

void check(bool ok, const char* what) {
    if (!ok) {
        std::fprintf(stderr, "invariant broken: %s\n", what);
        std::abort();
    }
}

struct Router {
    VekApiRoutes::Lines lines;
    VekRouteTable table;
    VekChangeRecorder recorder{nullptr};
    VekApiRoutes routes{lines, table, VekDeviceProfile::inUse(), recorder};
    VekHistoryRoutes history{lines, table, recorder};
    const VekMessageCatalog& catalog = VekMessageCatalog::shared();
    const VekSettingsTable& settings = VekSettingsTable::shared();
    VekServeConfig config;
    VekAccessGuard guard{config, 8741};
};

void readBody(const Router& router, const std::string& pattern, const std::string& body) {
    if (pattern == "/api/devices/{}/request") {
        VekCheckedRequest checked;
        const VekDeviceProfile* limits = &VekDeviceProfile::builtIn();
        if (!VekRequestBody::message(router.catalog, limits, body, checked)) {
            check(checked.valid(), "an accepted body names a message");
            const VekMasterMessage* message = &checked.message();
            const vekprotocol::VekFields& args = checked.args();
            check(!router.catalog.check(*message, args, limits), "the catalogue takes its args");
            for (const std::string& arg : args) {
                check(!arg.empty() && arg.find_first_of(":\n") == std::string::npos,
                      "no arg holds a separator");
            }
            std::stringstream frame;
            check(message->encode(args, 1, frame), "the encoder writes an accepted message");
        }
    } else if (pattern == "/api/devices/{}/apply" || pattern == "/api/devices/{}/snapshot") {
        VekValueJson::Json document;
        if (VekRequestBody::document(router.settings, body, document).empty()) {
            check(VekTuningDocument::check(router.settings, document).empty(),
                  "an accepted document passes the check again");
        }
    } else if (pattern == "/api/curve") {
        std::vector<VekResponseCurve::Band> bands;
        size_t points = 0;
        if (VekRequestBody::curve(body, bands, points).empty()) {
            check(bands.size() <= VekSettingsTable::kMaxBands, "at most forty bands");
            const VekResponseCurve::Json curve =
                VekResponseCurve(VekDeviceProfile::builtIn(), points).json(bands);
            check(curve["total"].size() == points, "a value for every point");
        }
    } else if (pattern == "/api/diff") {
        VekRequestBody::Diff diff;
        if (VekRequestBody::diff(router.settings, body, diff).empty()) {
            check(!(diff.device[0] && diff.device[1]), "a diff holds a document");
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Router router;
    const std::string input(reinterpret_cast<const char*>(data), size);
    const size_t newline = input.find('\n');
    const std::string line = input.substr(0, newline);
    const std::string body = newline == std::string::npos ? "" : input.substr(newline + 1);
    const size_t blank = line.find(' ');
    VekHttpRequest request;
    request.method = line.substr(0, blank);
    request.target = blank == std::string::npos ? "/" : line.substr(blank + 1);
    request.splitTarget();
    request.host = request.param("host");
    request.origin = request.param("origin");
    std::string why;
    const int denied = router.guard.check(request, why);
    check(denied == 0 || denied == 403, "without a token, only 403");

    VekRouteTable::Params params;
    std::string allowed;
    const VekRouteTable::Route* route =
        router.table.match(request.method, request.path, params, allowed);
    if (route == nullptr) {
        return 0;
    }
    for (const std::string& param : params) {
        const int index = VekRequestBody::index(param, 4);
        check(index >= -1 && index < 4, "an index is below the count");
    }
    readBody(router, route->pattern, body);
    return 0;
}
