#include "VekHttpRequest.h"

namespace vekserve {

namespace {

int hexValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return -1;
}

// %XX escapes and '+' for a blank, as forms send them; a broken escape stays as it is.
std::string decode(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        const int high = i + 2 < text.size() && text[i] == '%' ? hexValue(text[i + 1]) : -1;
        const int low = high >= 0 ? hexValue(text[i + 2]) : -1;
        if (low >= 0) {
            out += static_cast<char>(high * 16 + low);
            i += 2;
        } else {
            out += text[i] == '+' ? ' ' : text[i];
        }
    }
    return out;
}

}  // namespace

void VekHttpRequest::splitTarget() {
    const size_t mark = target.find('?');
    path = target.substr(0, mark);
    query.clear();
    if (mark == std::string::npos) {
        return;
    }
    size_t start = mark + 1;
    while (start <= target.size()) {
        size_t end = target.find('&', start);
        end = end == std::string::npos ? target.size() : end;
        const std::string pair = target.substr(start, end - start);
        if (!pair.empty()) {
            const size_t equals = pair.find('=');
            query[decode(pair.substr(0, equals))] =
                equals == std::string::npos ? "" : decode(pair.substr(equals + 1));
        }
        start = end + 1;
    }
}

bool VekHttpRequest::validId(const std::string& id) {
    return id.size() <= 64 &&
           id.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._:-") ==
               std::string::npos;
}

}  // namespace vekserve
