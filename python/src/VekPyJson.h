#pragma once

#include <pybind11/pybind11.h>

#include <string>

#include "VekValueJson.h"

namespace vekpython {

// Python values and the master library's JSON, both ways: documents, setting values and
// request arguments cross the binding this way, so the library's own checks and
// conversions apply to them unchanged.
class VekPyJson {
public:
    using Json = vekmaster::VekValueJson::Json;

    // None, bool, int, float, str, list, tuple and dict with str keys; an object with
    // __index__ counts as an int and one with __float__ as a float (numpy scalars).
    // Throws pybind11::value_error for anything else.
    static Json toJson(pybind11::handle value);
    // The same, the error naming what the value is: "the document: a value of type ...".
    static Json toJson(pybind11::handle value, const std::string& what);
    static pybind11::object toPython(const Json& value);
};

}  // namespace vekpython
