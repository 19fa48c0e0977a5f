#include "SampleRequests.h"

#include <fstream>
#include <sstream>

const char* SampleRequests::path() {
    return VEK_SAMPLE_REQUESTS_PATH;
}

const std::vector<SampleRequests::Request>& SampleRequests::all() {
    static const std::vector<Request> requests = [] {
        std::vector<Request> list;
        std::ifstream in(path());
        std::string line;
        while (std::getline(in, line)) {
            std::istringstream words(line.substr(0, line.find('#')));
            Request r;
            if (!(words >> r.feature >> r.message)) {
                continue;
            }
            for (std::string arg; words >> arg;) {
                r.args.push_back(arg);
            }
            list.push_back(r);
        }
        return list;
    }();
    return requests;
}

std::string SampleRequests::Request::frame(uint32_t self, const std::vector<std::string>& fields,
                                           const std::string& file) const {
    std::string text =
        "AS:" + std::to_string(self) + ":0:" + feature + ':' + message + "Request:0:OK";
    for (size_t i = 0; i < fields.size(); ++i) {
        text += i == 0 ? ":<" : ":";
        text += fields[i] == "FILE" ? file : fields[i];
    }
    text += fields.empty() ? ":\n" : ">:\n";
    return text;
}
