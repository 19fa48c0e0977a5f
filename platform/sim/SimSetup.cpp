#include "SimSetup.h"

#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <functional>
#include <utility>

namespace {

std::string trim(const std::string& text) {
    const char* blanks = " \t\r\n";
    const size_t first = text.find_first_not_of(blanks);
    if (first == std::string::npos) {
        return "";
    }
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    size_t from = 0;
    for (;;) {
        const size_t at = text.find(separator, from);
        parts.push_back(trim(text.substr(from, at - from)));
        if (at == std::string::npos) {
            return parts;
        }
        from = at + 1;
    }
}

// A checked strtol: the whole text, in int32_t range.
bool parseStatus(const std::string& text, int32_t& status) {
    if (text.empty()) {
        return false;
    }
    errno = 0;
    char* end = nullptr;
    const long value = std::strtol(text.c_str(), &end, 10);
    if (errno != 0 || *end != '\0' || end == text.c_str() || value < INT32_MIN ||
        value > INT32_MAX) {
        return false;
    }
    status = static_cast<int32_t>(value);
    return true;
}

// One item's changes, applied only when the whole item is well formed.
using Change = std::function<void(SimState&)>;

// Checks one list element; on success adds its change, else gives the reason.
using Element = std::function<std::string(const std::string&, SimState&, std::vector<Change>&)>;

std::string effectName(const std::string& name, const SimState& state) {
    return state.effects.count(name) != 0 ? "" : "unknown effect '" + name + "'";
}

std::string absentElement(const std::string& name, SimState& state, std::vector<Change>& changes) {
    std::string why = effectName(name, state);
    if (why.empty()) {
        changes.push_back([name](SimState& s) { s.effects[name].present = false; });
    }
    return why;
}

std::string onElement(const std::string& name, SimState& state, std::vector<Change>& changes) {
    std::string why = effectName(name, state);
    if (why.empty()) {
        changes.push_back([name](SimState& s) { s.effects[name].enabled = true; });
    }
    return why;
}

std::string nullElement(const std::string& name, SimState&, std::vector<Change>& changes) {
    const char* const kinds[] = {"App", "Volume", "Source"};
    for (size_t i = 0; i < 3; ++i) {
        if (name == kinds[i]) {
            changes.push_back([i](SimState& s) { s.nullFactory[i] = true; });
            return "";
        }
    }
    return "unknown object '" + name + "' (App, Volume or Source)";
}

std::string failElement(const std::string& text, SimState&, std::vector<Change>& changes) {
    const size_t colon = text.find(':');
    if (colon == std::string::npos) {
        return "'" + text + "' is not OPERATION:STATUS";
    }
    const std::string operation = trim(text.substr(0, colon));
    const std::string number = trim(text.substr(colon + 1));
    if (!SimFailures::isOperation(operation)) {
        return "unknown operation '" + operation + "'";
    }
    int32_t status = 0;
    if (!parseStatus(number, status)) {
        return "status '" + number + "' is not a 32-bit integer";
    }
    if (status == 0) {
        return "status 0 is success, not a failure";
    }
    changes.push_back([operation, status](SimState& s) { s.failures.always(operation, status); });
    return "";
}

// The reason an item is malformed, or "" with its changes.
std::string parseItem(const std::string& item, SimState& state, std::vector<Change>& changes) {
    const size_t equals = item.find('=');
    if (equals == std::string::npos) {
        return "no '='";
    }
    const std::string key = trim(item.substr(0, equals));
    const std::pair<const char*, Element> keys[] = {
        {"absent", absentElement}, {"on", onElement}, {"null", nullElement}, {"fail", failElement}};
    for (const auto& k : keys) {
        if (key != k.first) {
            continue;
        }
        for (const std::string& element : split(item.substr(equals + 1), ',')) {
            if (element.empty()) {
                return "empty name in the list";
            }
            std::string why = k.second(element, state, changes);
            if (!why.empty()) {
                return why;
            }
        }
        return "";
    }
    return "unknown key '" + key + "' (absent, on, null or fail)";
}

}  // namespace

std::vector<std::string> SimSetup::apply(const std::string& text, SimState& state) {
    std::vector<std::string> reports;
    for (const std::string& item : split(text, ';')) {
        if (item.empty()) {
            continue;
        }
        std::vector<Change> changes;
        const std::string why = parseItem(item, state, changes);
        if (!why.empty()) {
            std::string line = "audiosim: ignored set-up item '" + item + "': " + why + "\n";
            (void)!write(STDERR_FILENO, line.data(), line.size());
            line.pop_back();
            reports.push_back(std::move(line));
            continue;
        }
        for (const Change& change : changes) {
            change(state);
        }
    }
    return reports;
}
