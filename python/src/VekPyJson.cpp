#include "VekPyJson.h"

#include <climits>
#include <string>

namespace vekpython {

namespace py = pybind11;

namespace {

VekPyJson::Json integer(py::handle value) {
    int overflow = 0;
    const long long small = PyLong_AsLongLongAndOverflow(value.ptr(), &overflow);
    if (overflow == 0) {
        return static_cast<int64_t>(small);
    }
    if (overflow > 0) {
        const unsigned long long big = PyLong_AsUnsignedLongLong(value.ptr());
        if (!PyErr_Occurred()) {
            return static_cast<uint64_t>(big);
        }
        PyErr_Clear();
    }
    // Beyond 64 bits: no field takes it, and a float says so in the field's terms.
    return PyLong_AsDouble(value.ptr());
}

}  // namespace

VekPyJson::Json VekPyJson::toJson(py::handle value) {
    if (value.is_none()) {
        return nullptr;
    }
    if (PyBool_Check(value.ptr())) {
        return value.ptr() == Py_True;
    }
    if (PyLong_Check(value.ptr())) {
        return integer(value);
    }
    if (PyFloat_Check(value.ptr())) {
        return PyFloat_AsDouble(value.ptr());
    }
    if (PyUnicode_Check(value.ptr())) {
        return value.cast<std::string>();
    }
    if (PyList_Check(value.ptr()) || PyTuple_Check(value.ptr())) {
        Json array = Json::array();
        for (py::handle element : value) {
            array.push_back(toJson(element));
        }
        return array;
    }
    if (PyDict_Check(value.ptr())) {
        Json object = Json::object();
        for (const auto& member : value.cast<py::dict>()) {
            if (!PyUnicode_Check(member.first.ptr())) {
                throw py::value_error("a key " + py::repr(member.first).cast<std::string>() +
                                      " is not a string");
            }
            object[member.first.cast<std::string>()] = toJson(member.second);
        }
        return object;
    }
    if (PyObject_HasAttrString(value.ptr(), "__index__")) {
        return integer(py::reinterpret_steal<py::object>(PyNumber_Index(value.ptr())));
    }
    if (PyObject_HasAttrString(value.ptr(), "__float__")) {
        return py::float_(py::reinterpret_borrow<py::object>(value)).cast<double>();
    }
    throw py::value_error("a value of type " + std::string(Py_TYPE(value.ptr())->tp_name) +
                          " is not a number, string, bool, list or dict");
}

VekPyJson::Json VekPyJson::toJson(py::handle value, const std::string& what) {
    try {
        return toJson(value);
    } catch (const py::value_error& e) {
        throw py::value_error(what + ": " + e.what());
    }
}

py::object VekPyJson::toPython(const Json& value) {
    switch (value.type()) {
        case Json::value_t::null:
        case Json::value_t::discarded:
        case Json::value_t::binary:
            break;
        case Json::value_t::boolean:
            return py::bool_(value.get<bool>());
        case Json::value_t::number_integer:
            return py::int_(value.get<int64_t>());
        case Json::value_t::number_unsigned:
            return py::int_(value.get<uint64_t>());
        case Json::value_t::number_float:
            return py::float_(value.get<double>());
        case Json::value_t::string:
            return py::str(value.get_ref<const std::string&>());
        case Json::value_t::array: {
            py::list list;
            for (const Json& element : value) {
                list.append(toPython(element));
            }
            return std::move(list);
        }
        case Json::value_t::object: {
            py::dict dict;
            for (const auto& member : value.items()) {
                dict[py::str(member.key())] = toPython(member.value());
            }
            return std::move(dict);
        }
    }
    return py::none();
}

}  // namespace vekpython
