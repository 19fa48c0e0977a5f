#pragma once

#include <sstream>
#include <string>

#include "VekFieldWriter.h"
#include "VekRecordHead.h"
#include "VekText.h"

namespace vekprotocol {

// Writes the whole frame of a record into out (emptied first):
// AS:self:peer:feature:message:length:status[:<fields>]:\n then the raw data.
template <class Record>
void vekEncode(std::stringstream& out, const char* feature, const Record& record) {
    std::string text;
    text.reserve(96);
    text += "AS:";
    VekText::appendUint(text, record.self);
    text += ':';
    VekText::appendUint(text, record.peer);
    text += ':';
    text += feature;
    text += ':';
    text += Record::kMessage;
    if (record.fail) {
        text += ":0:NG";
    } else {
        text += ':';
        VekText::appendInt(text, record.rawDataLength);
        text += ":OK";
    }
    VekFieldWriter writer(text);
    // The writer only reads; the field lists are written once for both directions.
    fields(writer, const_cast<Record&>(record));
    writer.finish();
    text += ":\n";
    // A failed header announces length 0, so raw bytes behind it would be read as
    // the start of the next frame.
    const bool withRaw = !record.fail && record.rawData != nullptr && record.rawDataLength > 0;
    if (withRaw) {
        text.append(record.rawData, static_cast<size_t>(record.rawDataLength));
    }
    out.str(std::move(text));
    out.clear();
    out.seekp(0, std::ios_base::end);
}

}  // namespace vekprotocol
