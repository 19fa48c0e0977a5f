#pragma once

#include <string>

#include "VekMasterMessage.h"
#include "VekValueJson.h"

namespace vekpython {

// A request's ARGs from Python values, in wire order. A field of several elements takes
// one sequence or that many values; a list field takes a sequence or every value left.
// Each value must have its field's type (an int for an int field, a number for a float,
// a bool, a str): nothing is guessed from text.
class VekPyArgs {
public:
    using Json = vekmaster::VekValueJson::Json;

    // values is a JSON array. "" or what is wrong, naming the field and the fields
    // the message expects.
    static std::string read(const vekmaster::VekMasterMessage& message, const Json& values,
                            vekprotocol::VekFields& args);
};

}  // namespace vekpython
