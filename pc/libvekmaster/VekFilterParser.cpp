#include "VekFilterParser.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <sstream>

namespace vekmaster {

namespace {

using Shape = VekDeviceProfile::Shape;
using Filter = VekFilterList::Filter;

// What each type name reads as and which values it takes.
struct Type {
    const char* name;
    Shape shape;
    bool gain;   // takes Gain (and needs it)
    int q;       // 0: no Q (Butterworth); 1: needs a Q; 2: a Q or a slope, else Butterworth
};

const Type kTypes[] = {
    {"PK", Shape::Peaking, true, 1},     {"LS", Shape::LowShelf, true, 2},
    {"LSC", Shape::LowShelf, true, 2},   {"HS", Shape::HighShelf, true, 2},
    {"HSC", Shape::HighShelf, true, 2},  {"LP", Shape::LowPass, false, 0},
    {"LPQ", Shape::LowPass, false, 1},   {"HP", Shape::HighPass, false, 0},
    {"HPQ", Shape::HighPass, false, 1},
};

// The header lines of the Filter Settings form, by how they start.
const char* const kHeader[] = {"Room EQ V", "Dated:", "Notes:", "Equaliser:", "Equalizer:"};

const char* const kFormTitle = "Filter Settings file";

bool startsWith(const std::string& text, const char* prefix) {
    return text.compare(0, std::strlen(prefix), prefix) == 0;
}

std::string typeNames() {
    std::string names;
    for (const Type& type : kTypes) {
        names += (names.empty() ? "" : " ") + std::string(type.name);
    }
    return names;
}

// One line's words, and where the next one is.
class Words {
public:
    explicit Words(const std::string& line) {
        std::istringstream in(line);
        for (std::string word; in >> word;) {
            words_.push_back(word);
        }
    }
    bool done() const { return next_ >= words_.size(); }
    // "" past the last word.
    const std::string& peek() const { return done() ? none_ : words_[next_]; }
    std::string take() { return done() ? std::string() : words_[next_++]; }

private:
    std::vector<std::string> words_;
    const std::string none_;
    size_t next_ = 0;
};

// A finite number, its unit glued on ("-3.9dB") or the next word; "" or the problem.
std::string number(Words& words, const char* what, const std::vector<const char*>& units,
                   double& value) {
    const std::string text = words.take();
    if (text.empty()) {
        return std::string(what) + " has no value";
    }
    char* end = nullptr;
    errno = 0;
    value = std::strtod(text.c_str(), &end);
    if (end == text.c_str() || errno != 0 || !std::isfinite(value)) {
        return "'" + text + "' is not a number (" + what + ")";
    }
    std::string unit = end;
    for (const char* known : units) {
        if (unit.empty() && !words.done() && words.peek() == known) {
            unit = words.take();
        }
    }
    if (unit.empty()) {
        return "";
    }
    if (unit == "kHz" && std::strcmp(units.front(), "Hz") == 0) {
        value *= 1000;
        return "";
    }
    for (const char* known : units) {
        if (unit == known) {
            return "";
        }
    }
    return "'" + text + "' has an unknown unit (" + what + ")";
}

// The rest of a filter line after "Filter N:"; "" or the problem. None leaves no filter.
std::string filterLine(Words& words, int line, VekFilterList& out) {
    const std::string state = words.take();
    if (state == "None" && words.done()) {
        return "";
    }
    if (state != "ON" && state != "OFF") {
        return "expected ON, OFF or None, not '" + state + "'";
    }
    Filter filter;
    filter.line = line;
    filter.on = state == "ON";
    filter.type = words.take();
    const Type* type = nullptr;
    for (const Type& candidate : kTypes) {
        type = filter.type == candidate.name ? &candidate : type;
    }
    if (type == nullptr) {
        return "type '" + filter.type + "' is not read (types: " + typeNames() + ")";
    }
    filter.shape = type->shape;
    // A shelf's slope stands right after its type: "LS 6dB".
    double slope = 0;
    if (!words.done() && type->q == 2 && words.peek() != "Fc" && words.peek() != "Gain" &&
        words.peek() != "Q") {
        const std::string problem = number(words, "slope", {"dB"}, slope);
        if (!problem.empty()) {
            return problem;
        }
        if (!(slope > 0 && slope <= 12)) {
            return "a shelf's slope is above 0 and at most 12 dB an octave";
        }
    }
    bool has[3] = {};
    double* values[3] = {&filter.frequency, &filter.gain, &filter.q};
    const char* const keys[3] = {"Fc", "Gain", "Q"};
    const std::vector<const char*> units[3] = {{"Hz", "kHz"}, {"dB"}, {""}};
    while (!words.done()) {
        const std::string key = words.take();
        size_t k = 0;
        while (k < 3 && key != keys[k]) {
            ++k;
        }
        if (k == 3) {
            return "'" + key + "' is not read (expected Fc, Gain or Q)";
        }
        if (has[k]) {
            return std::string(keys[k]) + " twice";
        }
        has[k] = true;
        const std::string problem = number(words, keys[k], units[k], *values[k]);
        if (!problem.empty()) {
            return problem;
        }
    }
    // An OFF filter may keep the zeros of a band never set.
    if (!has[0] || !(filter.frequency > 0 || (!filter.on && filter.frequency == 0))) {
        return filter.type + " needs Fc above 0 Hz";
    }
    if (has[1] != type->gain) {
        return filter.type + (type->gain ? " needs Gain" : " takes no Gain");
    }
    if (type->q == 0 && has[2]) {
        return filter.type + " takes no Q (" + filter.type + "Q does)";
    }
    if (type->q == 1 && !has[2]) {
        return filter.type + " needs Q";
    }
    if (has[2] && slope > 0) {
        return filter.type + " takes a slope or a Q, not both";
    }
    if (has[2] && !(filter.q > 0 || (!filter.on && filter.q == 0))) {
        return "Q is above 0";
    }
    if (!has[2]) {
        filter.q = slope > 0 ? VekFilterParser::shelfQ(slope, filter.gain)
                             : VekFilterParser::kButterworthQ;
    }
    out.filters.push_back(filter);
    return "";
}

}  // namespace

double VekFilterParser::shelfQ(double slopeDb, double gain) {
    const double a = std::pow(10.0, gain / 40);
    const double s = slopeDb / 12;
    return 1 / std::sqrt((a + 1 / a) * (1 / s - 1) + 2);
}

std::vector<std::string> VekFilterParser::parse(const std::string& text, VekFilterList& out) {
    out = VekFilterList();
    std::vector<std::string> problems;
    std::istringstream in(text);
    bool first = true;
    bool header = false;  // within the Filter Settings form's header
    int number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        const size_t start = line.find_first_not_of(" \t");
        if (start == std::string::npos || line[start] == '#') {
            continue;
        }
        line.erase(0, start);
        const std::string where = "line " + std::to_string(number) + ": ";
        if (first && line == kFormTitle) {
            out.form = VekFilterList::Form::Rew;
            header = true;
            first = false;
            continue;
        }
        first = false;
        bool known = false;
        for (const char* prefix : kHeader) {
            known = known || (header && startsWith(line, prefix));
        }
        if (known) {
            continue;
        }
        Words words(line);
        const std::string head = words.take();
        std::string problem;
        if (head == "Preamp:") {
            if (out.preampLine != 0) {
                problem = "a second Preamp (the first is on line " +
                          std::to_string(out.preampLine) + ")";
            } else {
                problem = ::vekmaster::number(words, "Preamp", {"dB"}, out.preamp);
                out.preampLine = problem.empty() ? number : 0;
                problem = problem.empty() && !words.done() ? "Preamp takes one value in dB" : problem;
            }
        } else if (head == "Filter" || (startsWith(head, "Filter") && head.back() == ':')) {
            // "Filter:", "Filter 1:", "Filter  12:"
            const std::string label = head == "Filter" ? words.take() : head.substr(6);
            if (label.empty() || label.back() != ':' ||
                label.find_first_not_of("0123456789") != label.size() - 1) {
                problem = "expected 'Filter N:'";
            } else {
                header = false;
                problem = filterLine(words, number, out);
            }
        } else {
            problem = "'" + line + "' is not a Preamp or Filter line";
        }
        if (!problem.empty()) {
            problems.push_back(where + problem);
        }
    }
    return problems;
}

}  // namespace vekmaster
