#include "VekReplyFormatter.h"

#include <cstdio>

namespace vekmaster {

namespace {

using Kind = VekFieldPrinter::Kind;

void appendJsonString(std::string& out, const std::string& text) {
    out += '"';
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (byte < 0x20) {
            char escaped[8];
            std::snprintf(escaped, sizeof(escaped), "\\u%04x", byte);
            out += escaped;
        } else {
            out += c;
        }
    }
    out += '"';
}

void appendJsonPart(std::string& out, const VekFieldPrinter::Part& part) {
    switch (part.kind) {
        case Kind::Bool:
            out += part.text == "1" ? "true" : "false";
            break;
        case Kind::Text:
            appendJsonString(out, part.text);
            break;
        case Kind::Number: {
            // %g writes inf and nan, which JSON has no words for.
            const size_t digit = part.text.find_first_not_of('-');
            const bool finite =
                digit != std::string::npos && part.text[digit] >= '0' && part.text[digit] <= '9';
            out += finite ? part.text : "null";
            break;
        }
    }
}

}  // namespace

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
    std::string out = "{\"feature\":";
    appendJsonString(out, reply.feature);
    out += ",\"message\":";
    appendJsonString(out, reply.message);
    out += ",\"self\":" + std::to_string(reply.self);
    out += reply.fail ? ",\"status\":\"NG\"" : ",\"status\":\"OK\"";
    out += ",\"fields\":{";
    for (size_t f = 0; f < reply.fields.size(); ++f) {
        const VekFieldPrinter::Field& field = reply.fields[f];
        out += f > 0 ? "," : "";
        appendJsonString(out, field.name);
        out += ':';
        out += field.many ? "[" : "";
        for (size_t i = 0; i < field.parts.size(); ++i) {
            out += i > 0 ? "," : "";
            appendJsonPart(out, field.parts[i]);
        }
        out += field.many ? "]" : "";
    }
    out += "},\"rawDataLength\":" + std::to_string(reply.rawDataLength) + "}\n";
    return out;
}

}  // namespace vekmaster
