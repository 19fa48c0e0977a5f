#include "VekPyLink.h"

#include "VekChannelBands.h"
#include "VekDeviceProfile.h"
#include "VekExitStatus.h"
#include "VekFilterImport.h"
#include "VekFilterWriter.h"
#include "VekLineSettings.h"
#include "VekNames.h"
#include "VekPyArgs.h"
#include "VekPyFailure.h"
#include "VekPyJson.h"
#include "VekRawFileSink.h"
#include "VekRemoteAccess.h"
#include "VekSessionAccess.h"
#include "VekSettingAccess.h"
#include "VekTuningApply.h"
#include "VekTuningDocument.h"

namespace vekpython {

namespace py = pybind11;

using vekmaster::VekMasterMessage;
using vekmaster::VekMasterReply;
using vekmaster::VekSetting;
using vekmaster::VekSettingsTable;
using vekmaster::VekValueJson;
using Json = VekPyLink::Json;
using Kind = VekPyFailure::Kind;
using Outcome = VekMasterReply::Outcome;

namespace {

// A daemon starts and stops within a second or two; these only bound a broken one.

// Each kind of error as the exception Python sees.
[[noreturn]] void raise(const vekmaster::VekError& error) {
    using Error = vekmaster::VekError::Kind;
    switch (error.kind) {
        case Error::Usage:
        case Error::Range:
        case Error::NotFound:
            throw py::value_error(error.text);
        case Error::NoAnswer:
            throw VekPyFailure(Kind::Timeout, error.text);
        case Error::Busy:
        case Error::LineFailed:
            throw VekPyFailure(Kind::Line, error.text);
        case Error::None:
        case Error::RawFailed:
        case Error::BadAnswer:
            break;
    }
    throw VekPyFailure(Kind::Error, error.text);
}

// A float field reads as a float in Python even when its wire text is an integer.
void asBase(Json& value, const std::string& base) {
    if (value.is_structured()) {
        for (Json& element : value) {
            asBase(element, base);
        }
    } else if (base == "float" && value.is_number_integer()) {
        value = value.get<double>();
    }
}

void typed(const VekSetting& setting, Json& item) {
    if (setting.value.size() == 1) {
        asBase(item, setting.value[0].base);
        return;
    }
    for (const auto& slot : setting.value) {
        const auto found = item.is_object() ? item.find(slot.name) : item.end();
        if (found != item.end()) {
            asBase(*found, slot.base);
        }
    }
}

py::tuple replyTuple(const VekMasterReply& reply, const VekMasterMessage& message, bool streamed) {
    py::dict fields;
    for (const auto& field : reply.fields) {
        std::string base;
        for (const auto& slot : message.answer.slots()) {
            base = slot.name == field.name ? slot.base : base;
        }
        Json value = Json::array();
        for (const auto& part : field.parts) {
            value.push_back(VekValueJson::fromPart(part));
        }
        asBase(value, base);
        fields[py::str(field.name)] = VekPyJson::toPython(field.many      ? value
                                                          : value.empty() ? Json()
                                                                          : value[0]);
    }
    py::object raw = streamed ? py::object(py::none()) : py::object(py::bytes(reply.rawData));
    return py::make_tuple(reply.feature, reply.message, reply.fail ? "NG" : "OK", reply.self,
                          fields, raw, reply.rawDataLength);
}

}  // namespace

void VekPyLink::open(const std::string& device, int baudRate, int timeoutMs) {
    speed_t speed = 0;
    if (!vektransport::VekLineSettings::speedFor(baudRate, speed)) {
        throw py::value_error("baud_rate " + std::to_string(baudRate) + " is not one of " +
                              vektransport::VekLineSettings::rates());
    }
    std::string problem;
    {
        py::gil_scoped_release nogil;
        problem = connection_.open(device, lineOptions(baudRate, timeoutMs));
    }
    if (!problem.empty()) {
        throw VekPyFailure(Kind::Line, problem);
    }
    access_ = &connection_.access();
    device_ = device;
}

std::string VekPyLink::launch(const std::string& path, const std::vector<std::string>& args,
                              const std::string& log, const std::vector<std::string>& environment,
                              int timeoutMs) {
    std::string used;
    std::string problem;
    {
        py::gil_scoped_release nogil;
        problem = connection_.startDaemon(path, args, log, environment, used);
        if (problem.empty()) {
            problem = connection_.awaitDaemon(lineOptions(0, timeoutMs));
        }
        if (!problem.empty()) {
            std::string report;
            connection_.close(report);
            problem += report.empty() ? "" : "; " + report;
        }
    }
    if (!problem.empty()) {
        throw VekPyFailure(Kind::Daemon,
                           problem + (used.empty() ? "" : " (daemon log: " + used + ')'));
    }
    access_ = &connection_.access();
    device_ = connection_.device();
    return used;
}

vekmaster::VekDeviceConnection::Options VekPyLink::lineOptions(int baudRate, int timeoutMs) const {
    vekmaster::VekDeviceConnection::Options options;
    options.baudRate = baudRate;
    options.timeoutMs = timeoutMs;
    options.window = window_;
    return options;
}

py::list VekPyLink::requestMany(const py::list& requests) {
    access();
    vekmaster::VekMasterExchange::Batch batch;
    for (const py::handle item : requests) {
        const py::list words = py::reinterpret_borrow<py::object>(item);
        if (words.size() < 2) {
            throw py::value_error("a request is (feature, message, argument...)");
        }
        vekmaster::VekMasterExchange e;
        py::list args;
        for (size_t i = 2; i < words.size(); ++i) {
            args.append(words[i]);
        }
        e.message = &prepare(words[0].cast<std::string>(), words[1].cast<std::string>(), args,
                             e.args);
        batch.push_back(std::move(e));
    }
    withAccess([&](vekmaster::VekDeviceAccess& access) { access.exchange(batch); });
    py::list replies;
    for (const vekmaster::VekMasterExchange& e : batch) {
        if (!e.reply.answered()) {
            raise(e.reply.error());
        }
        replies.append(replyTuple(e.reply, *e.message, false));
    }
    return replies;
}

void VekPyLink::setWindow(int window) {
    if (window < 1 || window > vekmaster::VekMasterSession::kMaxWindow) {
        throw py::value_error("window " + std::to_string(window) + " is not 1 to " +
                              std::to_string(vekmaster::VekMasterSession::kMaxWindow));
    }
    window_ = window;
    if (connection_.isOpen()) {
        connection_.session().setWindow(window);
    }
}

void VekPyLink::connect(const std::string& url, int index, const std::string& token) {
    if (index < 0) {
        throw py::value_error("device_index " + std::to_string(index) + " is below 0");
    }
    auto client = std::make_unique<vekhttp::VekHttpClient>();
    const std::string problem = client->open(url, token);
    if (!problem.empty()) {
        throw py::value_error("url " + problem);
    }
    client_ = std::move(client);
    remote_ = std::make_unique<vekhttp::VekRemoteAccess>(*client_, index);
    access_ = remote_.get();
    device_ = client_->url() + "/api/devices/" + std::to_string(index);
}

py::tuple VekPyLink::close() {
    bool clean = true;
    std::string report;
    {
        py::gil_scoped_release nogil;
        std::lock_guard<std::mutex> lock(mutex_);
        access_ = nullptr;
        remote_.reset();
        client_.reset();
        clean = connection_.close(report);
    }
    return py::make_tuple(clean, report);
}

vekmaster::VekDeviceAccess& VekPyLink::access() {
    if (!access_) {
        throw VekPyFailure(Kind::Error, "the link is closed");
    }
    return *access_;
}

template <class Work>
void VekPyLink::withAccess(Work&& work) {
    bool closed = false;
    {
        py::gil_scoped_release nogil;
        std::lock_guard<std::mutex> lock(mutex_);
        closed = !access_;
        if (connection_.isOpen()) {
            connection_.session().setLimits(limits());  // use_profile() may have changed it since
        }
        if (!closed) {
            work(*access_);
        }
    }
    if (closed) {
        throw VekPyFailure(Kind::Error, "the link is closed");
    }
}

void VekPyLink::force(bool on) {
    forced_ = on;
}

std::shared_ptr<const vekmaster::VekDeviceProfile> VekPyLink::limits() const {
    return forced_ || client_ != nullptr ? nullptr : vekmaster::VekDeviceProfile::inUse();
}

VekMasterReply VekPyLink::send(const VekMasterMessage& message, const vekprotocol::VekFields& args,
                               vekmaster::VekRawSink* raw) {
    if (forced_) {
        const vekmaster::VekError breach =
            vekmaster::VekDeviceProfile::inUse()->check(message, args);
        if (breach &&
            PyErr_WarnEx(PyExc_UserWarning, (breach.text + "; sending it anyway").c_str(), 2) != 0) {
            throw py::error_already_set();
        }
    }
    vekmaster::VekCheckedRequest checked;
    const vekmaster::VekError refused = catalog_.check(message, args, limits().get(), checked);
    if (refused) {
        raise(refused);
    }
    VekMasterReply reply;
    withAccess([&](vekmaster::VekDeviceAccess& access) { reply = access.send(checked, raw); });
    return reply;
}

const VekMasterMessage& VekPyLink::prepare(const std::string& feature, const std::string& name,
                                           const py::list& args, vekprotocol::VekFields& wire) {
    const VekMasterMessage* message = nullptr;
    const vekmaster::VekError unknown = catalog_.lookup({feature, name}, message);
    if (unknown) {
        raise(unknown);
    }
    Json values = Json::array();
    for (size_t i = 0; i < args.size(); ++i) {
        values.push_back(VekPyJson::toJson(
            args[i], feature + ' ' + name + ": argument " + std::to_string(i + 1)));
    }
    const std::string problem = VekPyArgs::read(*message, values, wire);
    if (!problem.empty()) {
        throw py::value_error(problem);
    }
    return *message;
}

py::tuple VekPyLink::request(const std::string& feature, const std::string& name,
                             const py::list& args, const std::string& output) {
    access();
    vekprotocol::VekFields wire;
    const VekMasterMessage* message = &prepare(feature, name, args, wire);
    std::unique_ptr<vekmaster::VekRawFileSink> file;
    if (!output.empty()) {
        file = std::make_unique<vekmaster::VekRawFileSink>(output);
    }
    const VekMasterReply reply = send(*message, wire, file.get());
    if (!reply.answered()) {
        raise(reply.error());
    }
    return replyTuple(reply, *message, file != nullptr);
}

vekmaster::VekSettingAccess::Target VekPyLink::target(const std::string& feature,
                                                     const std::string& name,
                                                     const std::string& channel, int band) {
    access();
    vekmaster::VekSettingAccess::Target found;
    const vekmaster::VekError error =
        vekmaster::VekSettingAccess::locate(table_, feature, name, channel, band, false, found);
    if (error) {
        raise(error);
    }
    return found;
}

template <class Work>
void VekPyLink::onSetting(Work&& work) {
    vekmaster::VekError error;
    std::vector<std::string> breaches;
    withAccess([&](vekmaster::VekDeviceAccess& access) {
        vekmaster::VekSettingAccess settings(access, table_, limits().get());
        if (forced_) {
            // Warned once the GIL is back; sent all the same.
            settings.setSending([&](const vekmaster::VekCheckedRequest& request) {
                const vekmaster::VekError breach = vekmaster::VekDeviceProfile::inUse()->check(
                    request.message(), request.args());
                if (breach) {
                    breaches.push_back(breach.text + "; sending it anyway");
                }
            });
        }
        error = work(settings);
    });
    for (const std::string& breach : breaches) {
        if (PyErr_WarnEx(PyExc_UserWarning, breach.c_str(), 2) != 0) {
            throw py::error_already_set();
        }
    }
    if (error) {
        raise(error);
    }
}

py::tuple VekPyLink::read(const std::string& feature, const std::string& name,
                          const std::string& channel, int band) {
    const vekmaster::VekSettingAccess::Target where = target(feature, name, channel, band);
    vekmaster::VekSettingAccess::Result result;
    onSetting([&](vekmaster::VekSettingAccess& settings) { return settings.read(where, result); });
    py::object value = py::none();
    if (result.reply.outcome == Outcome::Ok) {
        typed(*where.setting, result.value);
        value = VekPyJson::toPython(result.value);
    }
    return py::make_tuple(replyTuple(result.reply, *result.message, false), value);
}

py::tuple VekPyLink::write(const std::string& feature, const std::string& name,
                           const std::string& channel, int band, py::handle value) {
    const vekmaster::VekSettingAccess::Target where = target(feature, name, channel, band);
    const Json given = VekPyJson::toJson(value, where.label());
    vekmaster::VekSettingAccess::Result result;
    onSetting([&](vekmaster::VekSettingAccess& settings) {
        return settings.write(where, given, result);
    });
    return replyTuple(result.reply, *result.message, false);
}

vekmaster::VekDeviceReading VekPyLink::readDevice(const Json* only) {
    vekmaster::VekDeviceReading reading;
    VekMasterReply stopped;
    bool read = false;
    withAccess([&](vekmaster::VekDeviceAccess& access) {
        read = access.read(only, reading);
        if (!read) {
            stopped = access.failure();
        }
    });
    if (!read) {
        raise(stopped.error());
    }
    return reading;
}

py::object VekPyLink::readSettings(py::handle only) {
    if (only.is_none()) {
        return VekPyJson::toPython(readDevice(nullptr).settings);
    }
    const Json settings = VekPyJson::toJson(only, "settings");
    return VekPyJson::toPython(readDevice(&settings).settings);
}

py::object VekPyLink::snapshot() {
    vekmaster::VekDeviceReading reading = readDevice(nullptr);
    // Through a server the document names the server's line, as vek_master --connect does.
    const std::string path = reading.path.empty() ? device_ : reading.path;
    return VekPyJson::toPython(vekmaster::VekTuningDocument::make(
        table_, path, reading.version, reading.features, std::move(reading.settings)));
}

py::object VekPyLink::apply(py::handle document, bool dryRun, bool bypass) {
    access();
    const Json doc = VekPyJson::toJson(document, "the document");
    const std::string problem = vekmaster::VekTuningDocument::check(table_, doc);
    if (!problem.empty()) {
        throw py::value_error(problem);
    }
    const vekmaster::VekError breach = vekmaster::VekTuningDocument::outOfRange(
        table_, doc, *vekmaster::VekDeviceProfile::inUse());
    if (breach) {
        raise(breach);
    }
    vekmaster::VekTuningApply::Options options;
    options.dryRun = dryRun;
    options.bypass = bypass;
    vekmaster::VekTuningApply::Result result;
    withAccess([&](vekmaster::VekDeviceAccess& access) { result = access.apply(doc, options); });
    if (result.status == vekmaster::VekExitStatus::kNoAnswer) {
        throw VekPyFailure(Kind::Timeout, result.problem);
    }
    if (result.status == vekmaster::VekExitStatus::kIo) {
        throw VekPyFailure(Kind::Line, result.problem);
    }
    return VekPyJson::toPython(vekmaster::VekTuningApply::json(result));
}

py::tuple VekPyLink::traffic() {
    vekmaster::VekMasterSession::Traffic traffic;
    withAccess([&](vekmaster::VekDeviceAccess&) {
        if (connection_.isOpen()) {
            traffic = connection_.session().traffic();
        }
    });
    return py::make_tuple(traffic.requests, traffic.bytesSent, traffic.bytesReceived);
}


py::object VekPyLink::importFilters(const std::string& text, const std::string& channels, bool fit,
                                    const std::string& preamp, bool dryRun) {
    access();
    vekmaster::VekFilterImport::Request request;
    request.text = text;
    request.source = "filters";
    request.options.fit = fit;
    request.dryRun = dryRun;
    std::string problem = vekmaster::VekFilterImport::channels(channels, request.channels);
    if (problem.empty()) {
        problem = vekmaster::VekFilterImport::preamp(preamp, request.options.preamp);
    }
    if (!problem.empty()) {
        throw py::value_error(problem);
    }
    vekmaster::VekFilterImport::Outcome outcome;
    withAccess([&](vekmaster::VekDeviceAccess& device) {
        outcome = vekmaster::VekFilterImport::toDevice(device, request);
    });
    if (!outcome.problems.empty()) {
        std::string all;
        for (const std::string& line : outcome.problems) {
            all += (all.empty() ? "" : "\n") + line;
        }
        throw py::value_error(all);
    }
    if (outcome.status == vekmaster::VekExitStatus::kNoAnswer) {
        throw VekPyFailure(Kind::Timeout, outcome.stopped);
    }
    if (outcome.status == vekmaster::VekExitStatus::kIo) {
        throw VekPyFailure(Kind::Line, outcome.stopped);
    }
    return VekPyJson::toPython(vekmaster::VekFilterImport::json(outcome, request.points));
}

std::string VekPyLink::exportFilters(const std::string& channel, const std::string& format) {
    access();
    if (format != "apo" && format != "rew") {
        throw py::value_error("format " + format + " is not apo or rew");
    }
    vekmaster::VekChannelBands bands;
    const vekmaster::VekMasterReply* failed = nullptr;
    std::string problem;
    bool read = false;
    vekmaster::VekMasterReply stopped;
    withAccess([&](vekmaster::VekDeviceAccess& device) {
        read = bands.read(device, channel, failed, problem);
        if (!read && failed != nullptr) {
            stopped = *failed;
        }
    });
    if (!read && failed == nullptr) {
        throw py::value_error(problem);
    }
    if (!read && stopped.answered()) {
        throw py::value_error("the bands of " + channel + " cannot be read: " + stopped.feature +
                              ' ' + stopped.message + " answered NG");
    }
    if (!read) {
        raise(stopped.error());
    }
    const std::shared_ptr<const vekmaster::VekDeviceProfile> profile =
        vekmaster::VekDeviceProfile::inUse();
    return vekmaster::VekFilterWriter::write(
        bands.bands, *profile,
        format == "rew" ? vekmaster::VekFilterList::Form::Rew : vekmaster::VekFilterList::Form::Apo,
        bands.feature + ' ' + channel + ", " + std::to_string(bands.bands.size()) +
            " bands (profile " + profile->name() + ')');
}

}  // namespace vekpython
