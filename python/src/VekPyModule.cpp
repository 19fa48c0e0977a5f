// vektuner._vektuner: the master library for the Python package vektuner. The package's
// Python code presents it (Link, Response, the typed helpers); everything about the
// wire, the settings and the documents happens here, in the library vek_master uses.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <memory>
#include <optional>
#include <string>

#include "VekDeviceProfile.h"
#include "VekPyFailure.h"
#include "VekPyJson.h"
#include "VekPyLink.h"
#include "VekSettingsTable.h"
#include "VekTuningDiff.h"
#include "VekTuningDocument.h"
#include "VekVirtualDevice.h"

namespace py = pybind11;

using namespace vekmaster;
using vekpython::VekPyFailure;
using vekpython::VekPyJson;
using vekpython::VekPyLink;

namespace {


py::list slots(const std::vector<VekFieldSignature::Slot>& fields) {
    py::list list;
    for (const VekFieldSignature::Slot& slot : fields) {
        list.append(py::dict(py::arg("name") = slot.name, py::arg("type") = slot.type,
                             py::arg("base") = slot.base, py::arg("count") = slot.count));
    }
    return list;
}

py::list messages() {
    py::list list;
    for (const VekMasterMessage& message : VekMessageCatalog::shared().messages()) {
        list.append(py::dict(py::arg("feature") = message.feature, py::arg("name") = message.name,
                             py::arg("response") = message.response,
                             py::arg("fields") = slots(message.signature.slots()),
                             py::arg("answer") = slots(message.answer.slots())));
    }
    return list;
}

const char* rangeName(VekSetting::Range range) {
    switch (range) {
        case VekSetting::Range::ChannelArray:
            return "channel_array";
        case VekSetting::Range::PerChannel:
            return "per_channel";
        case VekSetting::Range::PerBand:
            return "per_band";
        case VekSetting::Range::One:
            break;
    }
    return "one";
}

py::list settings() {
    py::list list;
    for (const VekSetting& setting : VekSettingsTable::shared().settings()) {
        list.append(py::dict(
            py::arg("feature") = setting.feature, py::arg("name") = setting.name,
            py::arg("range") = rangeName(setting.range), py::arg("get") = setting.get->name,
            py::arg("set") = setting.set != nullptr ? py::object(py::str(setting.set->name))
                                                    : py::object(py::none()),
            py::arg("last_set") = setting.lastSet, py::arg("disturbs") = setting.disturbs,
            py::arg("value") = slots(setting.value)));
    }
    return list;
}

}  // namespace

PYBIND11_MODULE(_vektuner, m) {
    m.doc() =
        "The vek_tuner master library (message catalogue, sessions, settings table, "
        "tuning documents); used through the package vektuner.";

    py::register_exception_translator([](std::exception_ptr failure) {
        try {
            if (failure) {
                std::rethrow_exception(failure);
            }
        } catch (const VekPyFailure& e) {
            const py::object type = py::module_::import("vektuner._errors").attr(e.className());
            PyErr_SetString(type.ptr(), e.what());
        }
    });

    m.def("messages", &messages);
    m.def("settings", &settings);
    m.attr("channels") = VekSettingsTable::channels();
    m.attr("max_bands") = VekSettingsTable::kMaxBands;
    m.def("use_profile", [](const std::optional<std::string>& path) {
        if (!path) {
            VekDeviceProfile::use(nullptr);
            return VekDeviceProfile::builtIn().name();
        }
        auto profile = std::make_shared<VekDeviceProfile>();
        const std::string problem = profile->load(*path);
        if (!problem.empty()) {
            throw py::value_error(problem);
        }
        const std::string name = profile->name();
        VekDeviceProfile::use(std::move(profile));
        return name;
    });
    m.def("check", [](py::handle document) {
        return VekTuningDocument::check(VekSettingsTable::shared(),
                                        VekPyJson::toJson(document, "the document"));
    });
    m.def("virtual_options", [](py::handle document) {
        return VekVirtualDevice::optionsFor(VekPyJson::toJson(document, "the document"));
    });
    m.def("diff", [](py::handle a, py::handle b) {
        py::list list;
        for (const VekTuningDiff::Difference& d : VekTuningDiff::compare(
                 VekSettingsTable::shared(), VekPyJson::toJson(a, "a"), VekPyJson::toJson(b, "b"))) {
            list.append(py::make_tuple(d.label, VekPyJson::toPython(d.aValue),
                                       VekPyJson::toPython(d.bValue), VekTuningDiff::line(d)));
        }
        return list;
    });

    py::class_<VekPyLink>(m, "Session")
        .def(py::init<>())
        .def("open", &VekPyLink::open)
        .def("launch", &VekPyLink::launch)
        .def("connect", &VekPyLink::connect)
        .def("close", &VekPyLink::close)
        .def("force", &VekPyLink::force)
        .def("request", &VekPyLink::request)
        .def("request_many", &VekPyLink::requestMany)
        .def("set_window", &VekPyLink::setWindow)
        .def("read", &VekPyLink::read)
        .def("write", &VekPyLink::write)
        .def("read_settings", &VekPyLink::readSettings)
        .def("snapshot", &VekPyLink::snapshot)
        .def("apply", &VekPyLink::apply)
        .def("import_filters", &VekPyLink::importFilters)
        .def("export_filters", &VekPyLink::exportFilters)
        .def("traffic", &VekPyLink::traffic)
        .def_property_readonly("device", &VekPyLink::device);
}
